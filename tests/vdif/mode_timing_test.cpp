#include "vdif/mode_timing.h"

#include <cstdio>
#include <sstream>
#include <utility>
#include <vector>

#include "support/temp_dir.h"
#include "vdif/vdif_reader.h"

using Values = std::vector<std::pair<VdifField, std::uint64_t>>;

// 640 x 480 at 60 Hz, with borders: blanking reaches the end of the line and of the frame.
static const Values VGA = {{TimingField::HorPixel, 640},       {TimingField::VerPixel, 480},
                           {TimingField::PixelClock, 25175},   {TimingField::HorFrequency, 31469},
                           {TimingField::VerFrequency, 59940}, {TimingField::HorSyncStart, 26058},
                           {TimingField::HorSyncTime, 3813},   {TimingField::HorTotalTime, 31778},
                           {TimingField::VerSyncStart, 15571}, {TimingField::VerSyncTime, 64},
                           {TimingField::VerTotalTime, 16683}, {TimingField::HorBlankStart, 25740},
                           {TimingField::HorBlankTime, 6038},  {TimingField::VerBlankStart, 15507},
                           {TimingField::VerBlankTime, 1176}};

struct ModeTimingTest : TempDirTest {
    void SetUp() override { currentDescription.reset(); } // process-wide: each case starts empty

    // Makes a description with one timing the current one; the last value of a field counts.
    static void load(const std::string &name, Values values, std::uint64_t syncConfiguration = 0) {
        MonitorDescription description = makeDescription();
        const std::size_t limits = addLimits(description), record = addTiming(description);
        setField(description, limits, LimitsField::SyncConfiguration, syncConfiguration);
        setField(description, record, TimingField::Preadjustedtimingname, addString(name));
        for (const auto &[field, value] : values)
            setField(description, record, field, value);
        indexTimings(description);
        currentDescription = std::make_shared<const MonitorDescription>(std::move(description));
    }
    static Values changed(Values values, const Values &changes) {
        values.insert(values.end(), changes.begin(), changes.end());
        return values;
    }
    static std::string find(std::string_view name) {
        const auto t = findTimingByName(name);
        if (!t)
            return "none";
        char text[200];
        std::snprintf(text, sizeof text, "%.3f %d %d %d %d %d %d %d %d %02x", t->clock, t->hDisplay,
                      t->hSyncStart, t->hSyncEnd, t->hTotal, t->vDisplay, t->vSyncStart,
                      t->vSyncEnd, t->vTotal, t->flags);
        return text;
    }
};

TEST_F(ModeTimingTest, NamedTimingBecomesAModeLine) {
    EXPECT_EQ(find("vga60"), "none");
    load("vga60", VGA, 4);
    EXPECT_EQ(find("VGA60"), "none");
    EXPECT_EQ(find("vga60"), "25.175 640 656 752 800 480 490 492 525 0a");
    const Values changes = {{TimingField::ScanType, SCAN_INTERLACED},
                            {TimingField::HorSyncPolarity, 1},
                            {TimingField::VerSyncPolarity, 1},
                            {TimingField::HorPixel, 1283},
                            {TimingField::PixelClock, 251750}}; // products beyond 32 bits
    load("lace", changed(VGA, changes), SYNC_CONFIG_ON_GREEN);
    EXPECT_EQ(find("lace"), "251.750 1288 6560 7520 8000 480 490 492 525 95");
    EXPECT_EQ(messages(), "");
    Values most = VGA; // every field at its edge: what exceeds an int keeps its low bits
    for (auto &[field, value] : most)
        value = field.width == 2 ? 0xffff : 0xffffffff;
    load("most", most);
    EXPECT_EQ(find("most"), "4294967.500 65536 281470688 562941376 -140471200 65535 281470681 "
                            "562941362 -140513479 0a");
}

// A row of the table that the shipped library is made from, as find() shows its mode: horizontal
// numbers, all but the display a sum of parts, go up to a multiple of 8 pixels.
static std::string shownRow(const std::string &row, std::string &name) {
    const auto up = [](int pixels) { return (pixels + 7) / 8 * 8; };
    std::istringstream words(row);
    std::string polarity, scan;
    double clock = 0;
    int h[4], v[4];
    words >> name >> clock >> h[0] >> h[1] >> h[2] >> h[3] >> v[0] >> v[1] >> v[2] >> v[3];
    EXPECT_TRUE(words >> polarity) << row;
    words >> scan;
    const int flags =
        (scan == "i" ? 0x10 : 0) | (polarity[0] == '+' ? 1 : 2) | (polarity[1] == '+' ? 4 : 8);
    char text[200];
    std::snprintf(text, sizeof text, "%.3f %d %d %d %d %d %d %d %d %02x", clock, up(h[0]), up(h[1]),
                  up(up(h[1]) + h[2] - h[1]), up(h[3]), v[0], v[1], v[2], v[3], flags);
    return text;
}

TEST_F(ModeTimingTest, TheShippedTimingsConvertToTheModeLinesOfTheirTable) {
    defaultDescription.reset();
    loadMonitorDescriptions(SCRCONF_SOURCE_DIR "/data/Korvel/MonitorConfig/timings.vda", nullptr);
    std::istringstream table(readFile(SCRCONF_SOURCE_DIR "/tools/timings.table"));
    std::size_t rows = 0;
    for (std::string row, name; std::getline(table, row);) {
        if (row.empty() || row.starts_with('#'))
            continue;
        const std::string mode = shownRow(row, name);
        EXPECT_EQ(find(name), mode) << name;
        EXPECT_EQ(timingName(timingRecord(*currentDescription, rows++)), name);
    }
    EXPECT_EQ(rows, timingCount(*currentDescription));
    EXPECT_EQ(messages(), "");
}

TEST_F(ModeTimingTest, ContradictingTimesAreReportedByTheirSum) {
    const std::pair<Values, int> cases[] = {
        {{{TimingField::HorBlankTime, 1260}, {TimingField::HorTotalTime, 30000}}, 0}, // 0.9
        {{{TimingField::HorBlankTime, 1260}, {TimingField::HorTotalTime, 30001}}, 1},
        {{{TimingField::HorBlankTime, 7260}, {TimingField::HorTotalTime, 30000}}, 0}, // 1.1
        {{{TimingField::HorBlankTime, 7260}, {TimingField::HorTotalTime, 29999}}, 1},
        {{{TimingField::VerTotalTime, 0}}, 2 + 32}, // nothing is above 1.1 of 0
        {{{TimingField::HorBlankStart, 26059}}, 4},
        {{{TimingField::VerBlankStart, 15572}, {TimingField::HorTotalTime, 26057}}, 1 + 8 + 16},
    };
    for (const auto &[changes, number] : cases) {
        load("t", changed(VGA, changes));
        find("t");
        EXPECT_EQ(messages(),
                  number ? "PreAdjustedTiming t: error number " + std::to_string(number) + "\n"
                         : "");
    }
    load("zero", {{TimingField::VerSyncStart, 1}});
    EXPECT_EQ(find("zero"), "0.000 0 0 0 0 0 0 0 0 0a");
    EXPECT_EQ(messages(), "PreAdjustedTiming zero: error number 32\n");
}
