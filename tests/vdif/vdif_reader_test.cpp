#include "vdif/vdif_reader.h"

#include <cstdio>
#include <cstdlib>

#include "support/temp_dir.h"

struct VdifReaderTest : TempDirTest {
    void SetUp() override { // process-wide: each case starts empty
        defaultDescription.reset();
        currentDescription.reset();
        stringPool.clear();
        unsetenv("VDIF_TRACE");
    }
    void TearDown() override { unsetenv("VDIF_TRACE"); }
};

static const std::string HEAD = "[VERSION] 1.1\n"
                                "[MONITOR_DESCRIPTION] Date=1996/5/12; FileRevision=\"r1\"\n"
                                "Manufacturer = \"Acme // Co\"  ModelNumber = m15\n"
                                "SerialNumber = s7 MonitorType = Monochrome CRTSize = 15\n";
static const std::string LIMITS =
    "[operational_limits] MaxHorPixel = 0x500 MaxVerPixel = 1024\n"
    "MaxHorAddrLength = 280 MaxVerAddrHeight = 210 VideoType = Analog WhiteLevel = 0.7\n"
    "SyncType = TTL SyncConfiguration = G MaxPixelClock = 135\n"
    "MinHorFrequency = 30 MaxHorFrequency = 64 MinVerFrequency = 50 MaxVerFrequency = 90\n";

// A timing whose error number is 17: no horizontal blank and a sync pulse behind the line.
static std::string timing(const std::string &name, const std::string &verFrequency) {
    return "[PREADJUSTED_TIMING] VerFrequency = " + verFrequency +
           " HorPixel = 1 HorPixel = 1280 VerPixel = 1024\nPreadjustedTimingName = \"" + name +
           "\" HorFrequency = 31.469 PixelClock = 135 HorTotalTime = 31.778 HorSyncStart = 40\n";
}

// Beyond three limits at once.
static const std::string TOO_MUCH =
    timing("Fast", "91") + "PixelClock = 135.001 HorFrequency = 64.001\n";
static const std::string LIBRARY = HEAD + LIMITS + timing("Slow", "40.5") + timing("Same", "50") +
                                   timing("Same", "70") + timing("Half", "43") +
                                   "ScanType = Interlaced\n" + TOO_MUCH + timing("lace", "50") +
                                   "ScanType = Interlaced\n";

// The names of the timings, each with its frame rate in mHz.
static std::string timings(const MonitorDescription &description) {
    std::string text;
    for (std::size_t index = 0; index < timingCount(description); index++) {
        const VdifBlock record = timingRecord(description, index);
        text += std::string(timingName(record)) + " " +
                std::to_string(fieldValue(record, TimingField::VerFrequency)) + "\n";
    }
    return text;
}

static std::string hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

// Every key once, each with a value of its own: the image shows where and how each is stored.
TEST_F(VdifReaderTest, EveryFieldHasItsPlaceAndUnit) {
    const auto description = readMonitorDescription(samplePath("every-field.vda"), true);
    EXPECT_EQ(hex(headerBlock(*description)),
              "5644494600000000000000000200fa00cc0705000c00cb0704000b00010000000300000005000000"
              "07000000090000000b0000000011" +
                  std::string(84, '0') + "0100000074000000" + std::string(24, '0'));
    EXPECT_EQ(hex(*limitsBlock(*description)),
              "000000000000000001000200030004000402020000000600070008000900"
              "0c000d0000000e0000000f0000001000000011000000120013000100000000000000");
    EXPECT_EQ(hex(timingRecord(*description, 0)),
              "00000000000000000d0000000300040009000a000b0c000200010800070000000500000006000000"
              "10000000160000001100000012001300140015001700180019001a001b000000");
    EXPECT_EQ(stringPool, std::string("\0A\0B\0C\0D\0E\0F\0G\0", 15));
}

TEST_F(VdifReaderTest, MonitorGetsTheLibraryTimingsThatFit) {
    writeFile("library", LIBRARY);
    writeFile("monitor", HEAD + LIMITS + timing("Own", "1"));
    setenv("VDIF_TRACE", "", 1);
    ASSERT_NE(loadMonitorDescriptions("library", "monitor"), nullptr);
    EXPECT_EQ(timings(*currentDescription), "Own 1000\nSame 50000\nSame 70000\nHalf 43000\n");
    EXPECT_EQ(messages(), "Test: Mode Slow \nBelow Minimum Vertical Frequency\n"
                          "Test: Mode Same \nPreAdjustedTiming Same: error number 17\n"
                          "Test: Mode Same \nPreAdjustedTiming Same: error number 17\n"
                          "Test: Mode Half \nPreAdjustedTiming Half: error number 17\n"
                          "Test: Mode Fast \nAbove Maximum Horizontal Frequency\n"
                          "Above Maximum Vertical Frequency\nAbove Maximum Bandwidth\n"
                          "Test: Mode lace \nAbove Maximum Vertical Frequency\n");
    const std::string library = timings(*defaultDescription);
    EXPECT_EQ(library, "Slow 40500\nSame 50000\nSame 70000\nHalf 43000\nFast 91000\nlace 50000\n");
    EXPECT_EQ(timings(*loadMonitorDescriptions("library", "library")), library);
    EXPECT_EQ(loadMonitorDescriptions("library", nullptr), defaultDescription.get());
    EXPECT_EQ(messages(), "");
}

TEST_F(VdifReaderTest, EstablishedTimingsAreTheOnlyOnesTaken) {
    const std::string established = LIMITS + "[ESTABLISHED_TIMINGS] \"lace\", \"Same\" \"Slow\"\n";
    writeFile("library", LIBRARY);
    writeFile("monitor", HEAD + established + timing("Own", "1"));
    writeFile("gamma", HEAD + established + "[GAMMA_TABLE_ENTRIES]\n" + timing("Own", "1"));
    writeFile("misspelt", HEAD + established + "slow \"Half\"" + timing("Own", "1"));
    loadMonitorDescriptions("library", "monitor");
    EXPECT_EQ(timings(*currentDescription), "lace 50000\nSame 50000\nSlow 40500\nOwn 1000\n");
    const std::string reports = "PreAdjustedTiming lace: error number 17\n"
                                "PreAdjustedTiming Same: error number 17\n"
                                "PreAdjustedTiming Slow: error number 17\n";
    EXPECT_EQ(messages(), reports);
    loadMonitorDescriptions("library", "gamma");
    EXPECT_EQ(timings(*currentDescription), "lace 50000\nSame 50000\nSlow 40500\n");
    EXPECT_EQ(messages(), reports);
    loadMonitorDescriptions("library", "misspelt");
    EXPECT_EQ(timings(*currentDescription), "lace 50000\nSame 50000\nSlow 40500\n");
    EXPECT_EQ(messages(), reports + "Can't find established timing SLOW\n");
    defaultDescription.reset();
    EXPECT_EQ(timings(*loadMonitorDescriptions(nullptr, "monitor")), "");
    EXPECT_EQ(messages(), "Can't find established timing lace\n");
}

TEST_F(VdifReaderTest, ReadingEndsWhereTheFormatIsLeftAndTheRestStays) {
    const std::string incomplete = "Invalid VDIF FILE monitor, missing Operational Limits\n";
    const std::string one = timing("One", "1"), two = timing("Two", "2");
    const struct {
        std::string text;
        std::uint64_t limits, type, gamma;
        std::string timings, messages;
    } cases[] = {
        {"", 0, 0, 0, "", incomplete},
        {"[VERSION] 1.1 [MONITOR_DESCRIPTION] Date = 1996.5.12", 0, 0, 0, "", incomplete},
        {HEAD + LIMITS + one + "[GAMMA_TABLE_ENTRIES]" + two, 1, 0, 0, "One 1000\n", ""},
        {HEAD + LIMITS + one + LIMITS + two, 1, 0, 0, "One 1000\n", ""},
        {HEAD + LIMITS + "[PREADJUSTED_TIMING] VerFrequency = $" + two, 1, 0, 0, " 0\n", ""},
        {HEAD + "RedPhosphorDecay=1 BorderRed=2 GreenGamma=2.2\n" + LIMITS, 1, 1, 1000, "", ""},
        {HEAD + "Phosphor1Decay = 1 [OPERATIONAL_LIMITS] MaxVerPixel = 1", 1, 0, 0, "", incomplete},
        {HEAD + LIMITS.substr(0, LIMITS.find("MinVer")) + one, 1, 0, 0, "One 1000\n", incomplete},
    };
    for (const auto &given : cases) {
        SCOPED_TRACE(given.text);
        writeFile("monitor", given.text);
        const auto description = readMonitorDescription("monitor", false);
        const VdifBlock header = headerBlock(*description);
        EXPECT_EQ(fieldValue(header, HeaderField::LimitsCount), given.limits);
        EXPECT_EQ(fieldValue(header, HeaderField::MonitorType), given.type);
        EXPECT_EQ(fieldValue(header, HeaderField::RedGamma), given.gamma);
        EXPECT_EQ(fieldValue(header, HeaderField::GreenGamma), 0u);
        EXPECT_EQ(timings(*description), given.timings);
        EXPECT_EQ(messages(), given.messages);
    }
}
