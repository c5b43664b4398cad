// From the bytes of an EDID to the modes that scrconf makes of the monitor file.
#include "support/edid.h"

#include "edid/edid_decoder.h"
#include "edid/library_timings.h"
#include "edid/vdif_writer.h"
#include "support/cases.h"
#include "vdif/mode_timing.h"
#include "vdif/vdif_reader.h"

// What `tools/make-edid monitor` writes.
static EdidImage madeEdid(const std::string &monitor) {
    const std::string edid = outputOf("'" SCRCONF_SOURCE_DIR "/tools/make-edid' " + monitor);
    return {edid.begin(), edid.end()};
}

// True when a mode has the numbers of the timing, the pixels rounded up to a multiple of 8.
static bool convertsBack(const ModeTiming &mode, const MonitorTiming &timing) {
    const auto up = [](std::int64_t pixels) { return (pixels + 7) / 8 * 8; };
    const TimingAxis &h = timing.horizontal, &v = timing.vertical;
    const std::int64_t start = up(h.syncStart), end = up(start + h.syncEnd - h.syncStart);
    const std::uint32_t flags = (timing.hSyncPositive ? MODE_PHSYNC : MODE_NHSYNC) |
                                (timing.vSyncPositive ? MODE_PVSYNC : MODE_NVSYNC) |
                                (timing.interlaced ? MODE_INTERLACE : 0);
    return mode.clock == static_cast<float>(timing.clock) / 1000 && mode.flags == flags &&
           mode.hDisplay == up(h.active) && mode.hSyncStart == start && mode.hSyncEnd == end &&
           mode.hTotal == up(h.total) && mode.vDisplay == v.active &&
           mode.vSyncStart == v.syncStart && mode.vSyncEnd == v.syncEnd && mode.vTotal == v.total;
}

// The EDID of a monitor with changes "<offset>=<byte> ..."; checksums that are not named are right.
static EdidImage patched(const std::string &monitor, const std::string &changes) {
    EdidImage edid = madeEdid(monitor);
    for (const bool sealed : {false, true}) {
        std::istringstream words(changes);
        char equals;
        int byte;
        for (std::size_t offset; words >> offset >> equals >> byte;)
            edid[offset] = static_cast<std::uint8_t>(byte);
        if (!sealed)
            seal(edid);
    }
    return edid;
}

struct EdidTest : TempDirTest {
    void SetUp() override { // process-wide: each case starts empty
        defaultDescription.reset();
        loadMonitorDescriptions(TIMING_LIBRARY, nullptr);
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
            loadMonitorDescriptions(TIMING_LIBRARY, "monitor");
        return text;
    }
    // What becomes of a changed monitor, see the file edid.cases.
    static std::string outcome(const std::string &monitor, const std::string &changes) {
        Edid edid;
        const EdidImage image = patched(monitor, changes);
        if (const std::string fault = decodeEdid(image, edid); !fault.empty())
            return fault;
        std::string shown, usual = "\n" + sampleFile(monitor + ".vda");
        for (const std::string &extension : edid.lostExtensions)
            shown += extension + "\n";
        std::istringstream text(convert(image));
        if (text.peek() == EOF)
            return "nothing is left";
        for (std::string added; std::getline(text, added);)
            if (usual.find("\n" + added + "\n") == usual.npos)
                shown += added + "\n";
        return shown + std::to_string(timingCount(*currentDescription)) + " timings";
    }
};

TEST_F(EdidTest, AMonitorFileHasWhatTheMonitorLists) {
    for (const std::string monitor : {"tube", "panel", "wide"})
        EXPECT_EQ(convert(madeEdid(monitor)), sampleFile(monitor + ".vda"));
    EXPECT_EQ(timingCount(*currentDescription), 11u); // scrconf reads it to its end
    convert(patched("tube", "71=18"));                // digital composite pulses have one polarity
    EXPECT_EQ(findTimingByName("1024x768@85").value().flags, MODE_PHSYNC | MODE_PVSYNC);
    convert(patched("tube", "20=2 71=0")); // analogue composite pulses are negative
    EXPECT_EQ(findTimingByName("1024x768@85").value().flags,
              MODE_NHSYNC | MODE_NVSYNC | MODE_SYNC_ON_GREEN);
}

// All timings of the library are timings of the maker; to 10 kHz, as an EDID has the clock.
TEST_F(EdidTest, TimingsConvertBackToTheirNumbers) {
    for (const auto &[name, timing] : libraryTimings())
        EXPECT_TRUE(convertsBack(findTimingByName(name).value(), timing)) << name;
    EXPECT_EQ(timingCount(*defaultDescription), libraryTimings().size());
    convert(madeEdid("library"));
    for (auto [name, timing] : libraryTimings()) {
        timing.clock = nearestQuotient(timing.clock, 10) * 10;
        EXPECT_TRUE(convertsBack(findTimingByName(name).value(), timing)) << name;
    }
}

TEST_F(EdidTest, ChangedBytesShowInTheMonitorFileOrAreRefused) {
    expectCases("edid.cases", outcome);
    const EdidImage image = madeEdid("tube");
    Edid edid;
    EXPECT_EQ(decodeEdid({}, edid), "is empty: no monitor is attached, or it has no EDID");
    EXPECT_EQ(decodeEdid(EdidBytes(image).first(127), edid),
              "is too short for an EDID: 127 bytes of 128");
    EXPECT_EQ(decodeEdid(EdidBytes(image).first(7), edid), "is no EDID");
}
