#include "vdif/vdif_reader.h"

#include <cstdlib>
#include <iomanip>
#include <regex>

#include "support/cases.h"
#include "vdif/vdif_scanner.h"

static const std::string LIBRARY = samplePath("library.vda");

// What is read of the monitor's file, as vdif-reader.cases tells.
static std::string shownDescription() {
    const VdifBlock header = headerBlock(*currentDescription);
    std::ostringstream shown;
    shown << fieldValue(header, HeaderField::LimitsCount) << ' '
          << fieldValue(header, HeaderField::MonitorType) << ' '
          << fieldValue(header, HeaderField::RedGamma) << ' '
          << fieldValue(header, HeaderField::GreenGamma) << '\n';
    for (std::size_t index = 0; index < timingCount(*currentDescription); index++) {
        const VdifBlock record = timingRecord(*currentDescription, index);
        shown << timingName(record) << ' ' << fieldValue(record, TimingField::VerFrequency) << '\n';
    }
    return shown.str();
}

static std::string hex(std::string_view bytes) {
    std::ostringstream text;
    text << std::hex << std::setfill('0');
    for (const unsigned char byte : bytes)
        text << std::setw(2) << +byte;
    return text.str() + "\n";
}

using VdifReaderTest = TempDirTest;

TEST_F(VdifReaderTest, TokensEndAndValuesAreKeptAsTheirKindWants) {
    expectCases("vdif-scanner.cases", [this](const std::string &kind, const std::string &text) {
        std::string shown;
        if (kind == "tokens") {
            VdifScanner scanner{.text = text};
            while (const auto token = nextToken(scanner))
                shown.append(*token).append("|");
            return shown;
        }
        for (const auto read : {readInt8, readInt16, readScaled16, readScaled32, readDate}) {
            VdifScanner scanner{.text = text};
            const VdifValue value = read(scanner);
            shown += (shown.empty() ? "" : " ") + (value ? std::to_string(*value) : "none");
        }
        return shown + "\n" + messages();
    });
}

// Every key once, each with a value of its own: the image shows where and how each is stored.
TEST_F(VdifReaderTest, EveryFieldHasItsPlaceAndUnit) {
    stringPool.clear();
    const auto description = readMonitorDescription(samplePath("every-field.vda"), true);
    EXPECT_EQ(hex(headerBlock(*description)) + hex(*limitsBlock(*description)) +
                  hex(timingRecord(*description, 0)),
              sampleFile("every-field.vda.read"));
    EXPECT_EQ(stringPool, std::string("\0A\0B\0C\0D\0E\0F\0G\0", 15));
}

TEST_F(VdifReaderTest, AMonitorGetsItsTimingsAndThoseOfTheLibraryThatFit) {
    const std::string library = readFile(LIBRARY);
    const std::size_t limits = library.find("[operational"), timings = library.find("[PRE");
    expectCases("vdif-reader.cases", [&](const std::string &kind, std::string text) {
        text = std::regex_replace(text, std::regex("\\$head"), library.substr(0, limits));
        writeFile("monitor", std::regex_replace(text, std::regex("\\$limits"),
                                                library.substr(limits, timings - limits)));
        if (kind == "traced")
            setenv("VDIF_TRACE", "", 1);
        defaultDescription.reset();
        loadMonitorDescriptions(kind == "alone" ? nullptr : LIBRARY.c_str(), "monitor");
        unsetenv("VDIF_TRACE");
        const std::string shown = shownDescription();
        return shown + messages();
    });
    EXPECT_EQ(loadMonitorDescriptions(LIBRARY.c_str(), nullptr), defaultDescription.get());
    EXPECT_EQ(timingCount(*loadMonitorDescriptions(LIBRARY.c_str(), LIBRARY.c_str())), 6u);
    EXPECT_EQ(messages(), "");
}
