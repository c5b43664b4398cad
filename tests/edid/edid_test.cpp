// From the bytes of an EDID to the modes that scrconf makes of the monitor file.
#include "support/edid.h"

#include "edid/edid_decoder.h"
#include "edid/library_timings.h"
#include "edid/vdif_writer.h"
#include "support/temp_dir.h"
#include "vdif/vdif_reader.h"

static constexpr const char *LIBRARY = SCRCONF_SOURCE_DIR "/data/Korvel/MonitorConfig/timings.vda";

using Patch = std::vector<std::pair<std::size_t, std::uint8_t>>; // bytes by their offset

// The panel without established and standard timings.
static const Patch NOTHING_LISTED = {{35, 0}, {36, 0}, {38, 1}, {39, 1}};

static EdidImage patched(const char *monitor, const Patch &patch) {
    EdidImage edid = madeEdid(monitor);
    for (const auto &[offset, byte] : patch)
        edid[offset] = byte;
    seal(edid);
    return edid;
}

struct EdidTest : TempDirTest {
    void SetUp() override { // process-wide: each case starts empty
        defaultDescription.reset();
        loadMonitorDescriptions(LIBRARY, nullptr);
    }
    // scrconf takes every file without a message.
    void TearDown() override { EXPECT_EQ(messages(), ""); }

    // The monitor file, which becomes the current description.
    static std::string convert(const EdidImage &image) {
        Edid edid;
        EXPECT_EQ(decodeEdid(image, edid), "");
        const std::string text = vdifText(edid);
        writeFile("monitor", text);
        if (!text.empty())
            loadMonitorDescriptions(LIBRARY, "monitor");
        return text;
    }
};

// A part of a file between two texts, the first one included.
static std::string part(const std::string &text, const char *from, const char *to) {
    const std::size_t begin = text.find(from);
    return text.substr(begin, text.find(to, begin) - begin);
}

TEST_F(EdidTest, AMonitorFileHasWhatTheMonitorLists) {
    for (const std::string monitor : {"tube", "panel", "wide"}) {
        EXPECT_EQ(convert(madeEdid(monitor)), sampleFile(monitor + ".vda"));
    }
    EXPECT_EQ(timingCount(*currentDescription), 11u); // scrconf reads it to its end
}

TEST_F(EdidTest, WhatTheRangeLacksComesFromTheTimings) {
    // A range from 120 to 50 Hz is none, and an interlaced timing counts by its fields.
    EXPECT_EQ(part(convert(patched("tube", {{77, 120}, {78, 50}})), "MinVer", "\n//"),
              "MinVerFrequency = 56.250\nMaxVerFrequency = 86.958\n");
    EXPECT_EQ(part(convert(patched("tube", {{81, 0}})), "MaxPix", "\n"), "MaxPixelClock = 108.000");
    // Nothing but the timing of the maker: the library adds none.
    convert(patched("panel", NOTHING_LISTED));
    EXPECT_EQ(timingCount(*currentDescription), 1u);
}

// All timings of the library are timings of the maker; to 10 kHz, as an EDID has the clock.
TEST_F(EdidTest, TimingsConvertBackToTheirNumbers) {
    convert(madeEdid("library"));
    for (auto [name, timing] : libraryTimings()) {
        timing.clock = nearestQuotient(timing.clock, 10) * 10;
        const auto mode = findTimingByName(name);
        EXPECT_TRUE(mode && convertsBack(*mode, timing)) << name;
    }
}

TEST_F(EdidTest, SyncAndTextsOfTheMonitor) {
    const Patch letters = {{77, 'A'}, {78, '"'},  {79, '\\'}, {80, 27},
                           {81, 200}, {82, '\n'}, {8, 0}};
    const std::string text = convert(patched("panel", letters));
    EXPECT_EQ(part(text, "Manu", "\nMon"),
              "Manufacturer = \"?BD\"\nModelNumber = \"A????\"\nSerialNumber = \"12345\"");
    EXPECT_EQ(part(convert(patched("panel", {{75, 0x10}})), "Model", "\n"),
              "ModelNumber = \"1118\"");
    EXPECT_EQ(part(convert(patched("tube", {{20, 4}, {24, 2}})), "MonitorType", "\n"),
              "MonitorType = Monochrome");
    EXPECT_EQ(fieldValue(*limitsBlock(*currentDescription), LimitsField::SyncConfiguration), 1u);
    convert(patched("tube", {{20, 2}, {71, 0}})); // analogue composite pulses are negative
    EXPECT_EQ(findTimingByName("1024x768@85").value().flags,
              MODE_NHSYNC | MODE_NVSYNC | MODE_SYNC_ON_GREEN);
}

TEST_F(EdidTest, WhatIsNoEdidIsRefusedAndALostExtensionToldOf) {
    EdidImage badSum = madeEdid("wide"), badExtension = badSum;
    badSum[127]++;
    badExtension[255]++;
    const std::pair<EdidImage, std::string> cases[] = {
        {{}, "is empty: no monitor is attached, or it has no EDID"},
        {{0, 255, 255, 255, 255, 255, 255}, "is no EDID"},
        {patched("tube", {{7, 1}}), "is no EDID"},
        {EdidImage(badSum.begin(), badSum.begin() + 127),
         "is too short for an EDID: 127 bytes of 128"},
        {badSum, "has a bad checksum"},
        {patched("tube", {{18, 2}}), "is of EDID version 2, which is not read"},
        {patched("tube", {{54, 0}, {55, 0}}), "has a detailed timing with a clock of zero"},
        {patched("tube", {{56, 0}, {58, 1}}), "has a detailed timing with a size of zero"},
        {patched("tube", {{59, 0}, {61, 0}}), "has a detailed timing with a size of zero"},
        {badExtension, "extension 1 has a bad checksum"},
        {patched("wide", {{128, 0x70}}), "extension 1 is of a kind that is not read"},
        {patched("wide", {{130, 3}}), "extension 1 has its timings outside of it"},
        {patched("wide", {{134, 0}, {136, 1}}),
         "extension 1 has a detailed timing with a size of zero"},
        {patched("wide", {{126, 2}, {130, 0}}), "extension 2 is missing"}};
    for (const auto &[image, fault] : cases) {
        Edid edid;
        std::string told = decodeEdid(image, edid);
        if (told.empty() && edid.detailed.size() == 1) // that of the base block
            told = edid.lostExtensions.at(0);
        EXPECT_EQ(told, fault);
    }
}

TEST_F(EdidTest, ATimingThatTheFormatCannotHoldIsLeftOut) {
    const Patch cases[] = {{{63, 0}},                           // no sync pulse
                           {{65, 48}},                          // one beyond the total
                           {{54, 0}, {55, 8}},                  // lines of 82 µs
                           {{54, 140}, {55, 10}},               // a frame of 67 ms
                           {{54, 255}, {55, 255}, {58, 0x11}}}; // lines of 1 µs
    for (Patch patch : cases) {
        EXPECT_EQ(part(convert(patched("panel", patch)), "// Left", ": "),
                  "// Left out, not within what this format holds");
        patch.insert(patch.end(), NOTHING_LISTED.begin(), NOTHING_LISTED.end());
        EXPECT_EQ(convert(patched("panel", patch)), "");
    }
}
