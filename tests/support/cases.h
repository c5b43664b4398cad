// Cases in a file of tests/data: an input "kind|text", and below it, four blanks in front, what
// becomes of it. Empty lines and comments (#) are for people. \n, \t and \0 stand for the bytes
// that they are in C, \\ for one backslash, \z for byte 26, and {1022a} for a byte so many times.
#pragma once

#include <sstream>
#include <vector>

#include "support/temp_dir.h"

inline std::string unpacked(const std::string &line) {
    static const std::string letters = "nt0z\\", bytes("\n\t\0\x1a\\", 5);
    std::string text;
    for (std::size_t at = 0; at < line.size(); at++) {
        const std::size_t end = line[at] == '{' ? line.find('}', at + 3) : 0;
        if (line[at] == '\\')
            text += bytes.at(letters.find(line[++at]));
        else if (end == 0)
            text += line[at];
        else
            text.append(std::stoul(line.substr(at + 1)), line[end - 1]), at = end;
    }
    return text;
}

// Compares what `outcome` makes of each kind and text; a line end behind it does not count.
template <typename Outcome> void expectCases(const std::string &file, Outcome outcome) {
    std::istringstream lines(sampleFile(file));
    std::vector<std::pair<std::string, std::string>> cases;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("    "))
            cases.back().second += unpacked(line.substr(4)) + "\n";
        else if (!line.empty() && !line.starts_with('#'))
            cases.emplace_back(line, "");
    EXPECT_FALSE(cases.empty()) << file;
    for (const auto &[input, expected] : cases) {
        const std::size_t bar = input.find('|');
        std::string made = outcome(input.substr(0, bar), unpacked(input.substr(bar + 1)));
        made += made.empty() || made.ends_with('\n') ? "" : "\n";
        EXPECT_EQ(made, expected) << input;
    }
}
