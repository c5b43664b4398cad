#include "vdif/vdif_reader.h"

#include <cstdlib>
#include <iomanip>
#include <sstream>

#include "support/temp_dir.h"
#include "vdif/mode_timing.h"

static const std::string LIBRARY_PATH = samplePath("library.vda"), LIBRARY = readFile(LIBRARY_PATH);

// The library's own description and limits, and a timing that has a name and a frame rate only.
static const std::string HEAD = LIBRARY.substr(0, LIBRARY.find("[operational")),
                         LIMITS = LIBRARY.substr(HEAD.size(), LIBRARY.find("[PRE") - HEAD.size());

static std::string timing(const std::string &name, int rate) {
    return "[PREADJUSTED_TIMING] PreadjustedTimingName = \"" + name +
           "\" VerFrequency = " + std::to_string(rate) + "\n";
}

struct VdifReaderTest : TempDirTest {
    void SetUp() override { stringPool.clear(); }
    void TearDown() override { unsetenv("VDIF_TRACE"); }

    // What is read of a monitor's file beside a library, or none: number of limits, type, gammas;
    // the timings with their frame rates in mHz; the messages.
    std::string read(const char *library, const std::string &text) {
        writeFile("monitor", text);
        defaultDescription.reset();
        loadMonitorDescriptions(library, "monitor");
        const VdifBlock header = headerBlock(*currentDescription);
        std::ostringstream shown;
        shown << fieldValue(header, HeaderField::LimitsCount) << ' '
              << fieldValue(header, HeaderField::MonitorType) << ' '
              << fieldValue(header, HeaderField::RedGamma) << ' '
              << fieldValue(header, HeaderField::GreenGamma) << '\n';
        for (std::size_t index = 0; index < timingCount(*currentDescription); index++) {
            const VdifBlock record = timingRecord(*currentDescription, index);
            shown << timingName(record) << ' ' << fieldValue(record, TimingField::VerFrequency)
                  << '\n';
        }
        return shown.str() + messages();
    }
};

static std::string hex(std::string_view bytes) {
    std::ostringstream text;
    text << std::hex << std::setfill('0');
    for (const unsigned char byte : bytes)
        text << std::setw(2) << +byte;
    return text.str() + "\n";
}

// Every key once, each with a value of its own: the image shows where and how each is stored.
TEST_F(VdifReaderTest, EveryFieldHasItsPlaceAndUnit) {
    const auto description = readMonitorDescription(samplePath("every-field.vda"), true);
    EXPECT_EQ(hex(headerBlock(*description)) + hex(*limitsBlock(*description)) +
                  hex(timingRecord(*description, 0)),
              sampleFile("every-field.vda.read"));
    EXPECT_EQ(stringPool, std::string("\0A\0B\0C\0D\0E\0F\0G\0", 15));
}

TEST_F(VdifReaderTest, MonitorGetsTheLibraryTimingsThatFit) {
    setenv("VDIF_TRACE", "", 1);
    EXPECT_EQ(read(LIBRARY_PATH.c_str(), HEAD + LIMITS + timing("Own", 1)),
              sampleFile("library.vda.fit"));
    EXPECT_EQ(timingCount(*defaultDescription), 6u);
    EXPECT_EQ(loadMonitorDescriptions(LIBRARY_PATH.c_str(), nullptr), defaultDescription.get());
    EXPECT_EQ(timingCount(*loadMonitorDescriptions(LIBRARY_PATH.c_str(), LIBRARY_PATH.c_str())),
              6u);
    EXPECT_EQ(messages(), "");
}

// What was read so far counts; the timings that a monitor lists are the only ones of the library.
TEST_F(VdifReaderTest, ReadingEndsWhereTheFormatIsLeft) {
    const char *library = LIBRARY_PATH.c_str();
    const std::string incomplete = "Invalid VDIF FILE monitor, missing Operational Limits\n",
                      listing =
                          HEAD + LIMITS + "[ESTABLISHED_TIMINGS] \"lace\", \"Same\" \"Slow\"\n",
                      listed = "1 0 0 0\nlace 50000\nSame 50000\nSlow 40500\n",
                      report = "PreAdjustedTiming Same: error number 17\n", one = timing("One", 1),
                      two = timing("Two", 2);
    const std::tuple<const char *, std::string, std::string> cases[] = {
        {nullptr, "", "0 0 0 0\n" + incomplete},
        {nullptr, "[VERSION] 1.1 [MONITOR_DESCRIPTION] Date=1.5.12", "0 0 0 0\n" + incomplete},
        {nullptr, HEAD + LIMITS + one + "[GAMMA_TABLE_ENTRIES]" + two, "1 0 0 0\nOne 1000\n"},
        {nullptr, HEAD + LIMITS + one + LIMITS + two, "1 0 0 0\nOne 1000\n"},
        {nullptr, HEAD + LIMITS + "[PREADJUSTED_TIMING] VerFrequency = $" + two, "1 0 0 0\n 0\n"},
        {nullptr, HEAD + "RedPhosphorDecay=1 BorderRed=2 GreenGamma=2.2\n" + LIMITS,
         "1 1 1000 0\n"},
        {nullptr, HEAD + "Phosphor1Decay = 1 [OPERATIONAL_LIMITS] MaxVerPixel = 1",
         "1 0 0 0\n" + incomplete},
        {nullptr, HEAD + LIMITS.substr(0, LIMITS.find("MinVer")) + one,
         "1 0 0 0\nOne 1000\n" + incomplete},
        {nullptr, listing, "1 0 0 0\nCan't find established timing lace\n"},
        {library, listing + one, listed + "One 1000\n" + report},
        {library, listing + "[GAMMA_TABLE_ENTRIES]\n" + one, listed + report},
        {library, listing + "slow \"Half\"" + one,
         listed + report + "Can't find established timing SLOW\n"}};
    for (const auto &[beside, text, shown] : cases)
        EXPECT_EQ(read(beside, text), shown) << text;
}

struct ModeTimingTest : VdifReaderTest {
    // The mode of a timing in the file vga60.vda with more text at its end, where each value takes
    // the place of the one above, and with the messages; `sync` is its configuration.
    std::string mode(const char *name, const std::string &text, const std::string &sync = "GP") {
        std::string file = sampleFile("vga60.vda");
        writeFile("monitor", file.replace(file.find("=GP") + 1, 2, sync) + text);
        currentDescription = readMonitorDescription("monitor", true);
        const auto t = findTimingByName(name);
        if (!t)
            return "none";
        std::ostringstream shown;
        shown << std::setprecision(10) << t->clock;
        for (const int number : {t->hDisplay, t->hSyncStart, t->hSyncEnd, t->hTotal, t->vDisplay,
                                 t->vSyncStart, t->vSyncEnd, t->vTotal})
            shown << ' ' << number;
        shown << ' ' << std::hex << t->flags << '\n';
        return shown.str() + messages();
    }
};

TEST_F(ModeTimingTest, NamedTimingBecomesAModeLine) {
    EXPECT_EQ(mode("VGA60", ""), "none");
    EXPECT_EQ(mode("vga60", ""), "25.17499924 640 656 752 800 480 490 492 525 a\n");
    EXPECT_EQ(mode("vga60",
                   "ScanType=Interlaced HorSyncPolarity=Positive VerSyncPolarity=Positive "
                   "HorPixel=1283 PixelClock=251.750", // products beyond 32 bits
                   "G"),
              "251.75 1288 6560 7520 8000 480 490 492 525 95\n");
    std::string most; // every field at its edge: what exceeds an int keeps its low bits
    for (const char *pixel : {"HorPixel", "VerPixel"})
        most += pixel + std::string("=65535 ");
    for (const char *time : {"HorSyncStart", "HorSyncTime", "HorBlankStart", "HorBlankTime",
                             "VerSyncStart", "VerSyncTime", "VerBlankStart", "VerBlankTime"})
        most += time + std::string("=65.535 ");
    for (const char *wide : {"PixelClock", "HorFrequency", "HorTotalTime", "VerTotalTime"})
        most += wide + std::string("=4294967.295 ");
    EXPECT_TRUE(mode("vga60", most)
                    .starts_with("4294967.5 65536 281470688 562941376 -140471200 "
                                 "65535 281470681 562941362 -140513479 a\n"));
    EXPECT_EQ(mode("zero", timing("zero", 0) + "VerSyncStart = 0.001"),
              "0 0 0 0 0 0 0 0 0 a\nPreAdjustedTiming zero: error number 32\n");
}

TEST_F(ModeTimingTest, ContradictingTimesAreReportedByTheirSum) {
    const std::pair<const char *, int> cases[] = {
        {"HorBlankTime=1.260 HorTotalTime=30", 0}, // 0.9
        {"HorBlankTime=1.260 HorTotalTime=30.001", 1},
        {"HorBlankTime=7.260 HorTotalTime=30", 0}, // 1.1
        {"HorBlankTime=7.260 HorTotalTime=29.999", 1},
        {"VerTotalTime=0", 2 + 32}, // nothing is above 1.1 of 0
        {"HorBlankStart=26.058", 0},
        {"HorBlankStart=26.059", 4},
        {"VerBlankStart=15.572 HorTotalTime=26.057", 1 + 8 + 16}};
    for (const auto &[changes, number] : cases) {
        const std::string shown = mode("vga60", changes);
        EXPECT_EQ(shown.substr(shown.find('\n') + 1),
                  number ? "PreAdjustedTiming vga60: error number " + std::to_string(number) + "\n"
                         : "");
    }
}
