// From the bytes of an EDID to the modes that scrconf makes of the monitor file.
#include "support/edid.h"

#include "edid/edid_decoder.h"
#include "edid/library_timings.h"
#include "edid/vdif_writer.h"
#include "support/temp_dir.h"
#include "vdif/vdif_reader.h"

static constexpr const char *LIBRARY = SCRCONF_SOURCE_DIR "/data/Korvel/MonitorConfig/timings.vda";

using Patch = std::vector<std::pair<std::size_t, std::uint8_t>>; // bytes by their offset

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

TEST_F(EdidTest, AMonitorFileHasWhatTheMonitorLists) {
    for (const std::string monitor : {"tube", "panel", "wide"})
        EXPECT_EQ(convert(madeEdid(monitor)), sampleFile(monitor + ".vda"));
    EXPECT_EQ(timingCount(*currentDescription), 11u); // scrconf reads it to its end
}

TEST_F(EdidTest, OtherBytesMakeOtherLines) {
    const std::string left = "// Left out, not within what this format holds: 1280x1024\n";
    const struct {
        const char *monitor;
        Patch patch;
        std::string lines;
    } cases[] = {
        // A range from 120 to 50 Hz is none; of an interlaced timing the fields count.
        {"tube", {{77, 120}, {78, 50}}, "MinVerFrequency = 56.250\nMaxVerFrequency = 86.958\n"},
        {"tube", {{81, 0}}, "\nMaxPixelClock = 108.000\n"}, // none is given
        {"wide",
         {{76, 15}, {77, 10}, {79, 1}},
         "\nMinHorFrequency = 256.000\nMaxHorFrequency = 270.000\nMinVerFrequency = 265.000\n"},
        {"tube", {{20, 4}, {24, 2}}, "\nMonitorType = Monochrome\n"},
        {"tube", {{20, 4}}, "\nSyncConfiguration = C\n"},
        {"panel",
         {{8, 0}, {75, 16}},
         "\nManufacturer = \"?BD\"\nModelNumber = \"1118\"\nSerialNumber = \"12345\"\n"},
        {"panel", {{77, '"'}, {78, '\\'}, {79, 27}, {80, 200}, {81, '\n'}}, "= \"????\"\n"},
        // The first shape of standard timings was a square once.
        {"panel", {{19, 2}, {39, 0}}, "// Left out, not in the library: 1280x1280@60\n"},
        {"panel", {{39, 0}}, "\n\"1280x800@60\"\n"},
        {"panel", {{63, 0}}, left},                                       // no sync pulse
        {"panel", {{65, 48}}, left},                                      // one beyond the total
        {"panel", {{54, 0}, {55, 8}}, left},                              // lines of 82 µs
        {"panel", {{54, 140}, {55, 10}}, left},                           // a frame of 67 ms
        {"panel", {{54, 255}, {55, 255}, {58, 17}}, "holds: 256x1024\n"}, // lines of 1 µs
    };
    for (const auto &[monitor, patch, lines] : cases)
        EXPECT_NE(convert(patched(monitor, patch)).find(lines), std::string::npos) << lines;
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

TEST_F(EdidTest, CompositeSyncHasOnePolarity) {
    convert(patched("tube", {{71, 0x12}})); // digital, positive
    EXPECT_EQ(findTimingByName("1024x768@85").value().flags, MODE_PHSYNC | MODE_PVSYNC);
    convert(patched("tube", {{20, 2}, {71, 0}})); // analogue, on green
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

// The monitor lists nothing but the timing of its maker, then not even one that can be written.
TEST_F(EdidTest, TheLibraryAddsNothing) {
    Patch patch = {{35, 0}, {36, 0}, {38, 1}, {39, 1}};
    convert(patched("panel", patch));
    EXPECT_EQ(timingCount(*currentDescription), 1u);
    patch.push_back({63, 0});
    EXPECT_EQ(convert(patched("panel", patch)), "");
}
