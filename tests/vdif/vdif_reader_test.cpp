#include "vdif/vdif_reader.h"

#include <cstdlib>
#include <initializer_list>
#include <sstream>

#include "support/temp_dir.h"

struct VdifReaderTest : TempDirTest {
    void SetUp() override { // process-wide: each case starts empty
        defaultPath.reset();
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

static const std::string LIBRARY = HEAD + LIMITS + timing("Slow", "40.5") + timing("Same", "50") +
                                   timing("Same", "70") + timing("Half", "43") +
                                   "ScanType = Interlaced\n" + timing("lace", "50") +
                                   "ScanType = Interlaced\n";

// The names of the timings, each with its frame rate in mHz.
static std::string timings(const MonitorDescription &description) {
    std::string text;
    for (std::size_t index = 0; index < timingCount(description); index++) {
        const VdifBlock record = timingRecord(description, index);
        text += timingName(description, record) + " " +
                std::to_string(fieldValue(record, TimingField::VerFrequency)) + "\n";
    }
    return text;
}

// Fields in hexadecimal, strings as their text.
static std::string fields(const MonitorDescription &description, VdifBlock block,
                          std::initializer_list<VdifField> numbers,
                          std::initializer_list<VdifField> strings) {
    std::ostringstream text;
    for (const VdifField field : numbers)
        text << std::hex << fieldValue(block, field) << " ";
    for (const VdifField field : strings)
        text << stringAt(description, fieldValue(block, field)) << ";";
    return text.str();
}

static std::string header(const MonitorDescription &description) {
    using namespace HeaderField;
    return fields(description, headerBlock(description),
                  {VdifVersion, VdifRevision, Date, MonitorType, CRTSize, RedGamma, GreenGamma,
                   BlueGamma, LimitsCount, LimitsOffset},
                  {FileRevision, Manufacturer, ModelNumber, MinVDIFIndex, Version, SerialNumber});
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
                          "Test: Mode lace \nAbove Maximum Vertical Frequency\n");
    const std::string library = timings(*defaultDescription);
    EXPECT_EQ(library, "Slow 40500\nSame 50000\nSame 70000\nHalf 43000\nlace 50000\n");
    EXPECT_EQ(timings(*loadMonitorDescriptions("library", "library")), library);
    EXPECT_EQ(loadMonitorDescriptions("library", nullptr), defaultDescription.get());
    EXPECT_EQ(loadMonitorDescriptions("library", "missing"), nullptr);
    EXPECT_EQ(loadMonitorDescriptions("library", "."), nullptr);
    EXPECT_EQ(messages(), "");
}

TEST_F(VdifReaderTest, EstablishedTimingsAreTheOnlyOnesTaken) {
    const std::string established = LIMITS + "[ESTABLISHED_TIMINGS] \"lace\", \"Same\" \"Slow\"\n";
    writeFile("library", LIBRARY);
    writeFile("monitor", HEAD + established + timing("Own", "1"));
    writeFile("misspelt", HEAD + established + "slow \"Half\"" + timing("Own", "1"));
    loadMonitorDescriptions("library", "monitor");
    EXPECT_EQ(timings(*currentDescription), "lace 50000\nSame 50000\nSlow 40500\nOwn 1000\n");
    const std::string reports = "PreAdjustedTiming lace: error number 17\n"
                                "PreAdjustedTiming Same: error number 17\n"
                                "PreAdjustedTiming Slow: error number 17\n";
    EXPECT_EQ(messages(), reports);
    loadMonitorDescriptions("library", "misspelt");
    EXPECT_EQ(timings(*currentDescription), "lace 50000\nSame 50000\nSlow 40500\n");
    EXPECT_EQ(messages(), reports + "Can't find established timing SLOW\n");
    defaultDescription.reset();
    EXPECT_EQ(timings(*loadMonitorDescriptions(nullptr, "monitor")), "");
    EXPECT_EQ(messages(), "Can't find established timing lace\n");
}

TEST_F(VdifReaderTest, ReadingEndsWhereTheFormatIsLeftAndTheRestStays) {
    const std::string start = "1 64 c000507cc ", strings = "r1;Acme // Co;M15;;;S7;";
    const std::string incomplete = "Invalid VDIF FILE monitor, missing Operational Limits\n";
    const struct {
        std::string text, header, timings, messages;
    } cases[] = {
        {"", "0 0 0 0 0 0 0 0 0 74 ;;;;;;", "", incomplete},
        {"[VERSION] 1.1 [MONITOR_DESCRIPTION] Date = 1996.5.12", "1 64 0 0 0 0 0 0 0 74 ;;;;;;", "",
         incomplete},
        {HEAD + LIMITS + timing("One", "1") + "[GAMMA_TABLE_ENTRIES]" + timing("Two", "2"),
         start + "0 f 0 0 0 1 74 " + strings, "One 1000\n", ""},
        {HEAD + LIMITS + timing("One", "1") + LIMITS + timing("Two", "2"),
         start + "0 f 0 0 0 1 74 " + strings, "One 1000\n", ""},
        {HEAD + LIMITS + "[PREADJUSTED_TIMING] VerFrequency = $" + timing("Two", "2"),
         start + "0 f 0 0 0 1 74 " + strings, " 0\n", ""}, // a record of its header only
        {HEAD + "RedPhosphorDecay = 1 BorderRed = 2 GreenGamma = 2.2\n" + LIMITS +
             timing("One", "1"),
         start + "1 f 3e8 0 3e8 1 74 " + strings, "One 1000\n", ""},
        {HEAD + "Phosphor1Decay = 1 Gamma = 2.2 [OPERATIONAL_LIMITS] MaxVerPixel = 1",
         start + "0 f 0 0 0 1 74 " + strings, "", incomplete}, // keys out of order
    };
    for (const auto &given : cases) {
        SCOPED_TRACE(given.text);
        writeFile("monitor", given.text);
        const auto description = readMonitorDescription("monitor");
        EXPECT_EQ(header(*description), given.header);
        EXPECT_EQ(timings(*description), given.timings);
        EXPECT_EQ(messages(), given.messages);
    }
}

TEST_F(VdifReaderTest, LimitsAreStoredInTheirUnits) {
    writeFile("monitor", HEAD + LIMITS + "MinHorRetrace = 3.5");
    const auto description = readMonitorDescription("monitor");
    using namespace LimitsField;
    EXPECT_EQ(fields(*description, *limitsBlock(*description),
                     {MaxHorPixel, MaxVerPixel, MaxHorAddrLength, MaxVerAddrHeight, VideoType,
                      TerminationResistance, WhiteLevel, SyncType, SyncConfiguration, MaxPixelClock,
                      MinHorFrequency, MaxHorFrequency, MinVerFrequency, MaxVerFrequency,
                      MinHorRetrace, MinVerRetrace, TimingCount},
                     {}),
              "500 400 118 d2 1 0 2bc 0 3 20f58 7530 fa00 c350 15f90 dac 0 0 ");
}
