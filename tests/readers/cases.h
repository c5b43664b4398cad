// Cases in a file of tests/data: a line of input, and below it, four blanks in front, what becomes
// of it. Empty lines and comments (#) are for people. In the input \n, \t and \0 stand for the
// bytes that they are in C, \\ for one backslash and \z for byte 26; in both a byte that stands 20
// times or more is written so: {1022a}.
#pragma once

#include <sstream>

#include "support/temp_dir.h"

inline std::string unpacked(const std::string &line) {
    static const std::string letters = "nt0z\\", bytes("\n\t\0\x1a\\", 5);
    std::string text;
    for (std::size_t at = 0; at < line.size(); at++) {
        std::size_t length = 0; // of the number
        if (line[at] == '\\')
            text += bytes[letters.find(line[++at])];
        else if (line[at] == '{') {
            const std::size_t count = std::stoul(line.substr(at + 1), &length);
            text.append(count, line[at += length + 1]);
            at++; // the bracket
        } else
            text += line[at];
    }
    return text;
}

inline std::string packed(const std::string &text) {
    std::string line;
    for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
        end = std::min(text.find_first_not_of(text[at], at), text.size());
        line += end - at < 20 ? text.substr(at, end - at)
                              : "{" + std::to_string(end - at) + text[at] + "}";
    }
    return line;
}

// Does `outcome` to each input of the file.
template <typename Outcome> void expectCases(const std::string &file, Outcome outcome) {
    std::istringstream given(sampleFile(file));
    std::string shown;
    for (std::string line, text; std::getline(given, line);) {
        if (line.starts_with("    "))
            continue;
        shown += line + "\n";
        if (line.empty() || line.starts_with("# "))
            continue;
        for (std::istringstream lines(outcome(unpacked(line))); std::getline(lines, text);)
            shown += "    " + packed(text) + "\n";
    }
    EXPECT_EQ(shown, sampleFile(file));
}
