// Cases in a file of tests/data: an input "kind|text", and below it, four blanks in front, what
// becomes of it. Empty lines and comments (#) are for people. In the text \n, \t and \0 stand for
// the bytes that they are in C, \\ for one backslash and \z for byte 26; in both a byte that stands
// 20 times or more is written so: {1022a}.
#pragma once

#include <sstream>

#include "support/temp_dir.h"

inline std::string unpacked(const std::string &line) {
    static const std::string letters = "nt0z\\", bytes("\n\t\0\x1a\\", 5);
    std::string text;
    for (std::size_t at = 0; at < line.size(); at++) {
        const std::size_t end = line[at] == '{' ? line.find('}', at + 3) : 0;
        if (line[at] == '\\')
            text += bytes[letters.find(line[++at])];
        else if (end == 0)
            text += line[at];
        else
            text.append(std::stoul(line.substr(at + 1)), line[end - 1]), at = end;
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

// Does `outcome` to each kind and text of the file.
template <typename Outcome> void expectCases(const std::string &file, Outcome outcome) {
    std::istringstream given(sampleFile(file));
    std::string shown;
    for (std::string line, made; std::getline(given, line);) {
        if (line.starts_with("    "))
            continue;
        shown += line + "\n";
        const std::size_t bar = line.find('|');
        if (line.starts_with('#') || bar == line.npos)
            continue;
        std::istringstream lines(outcome(line.substr(0, bar), unpacked(line.substr(bar + 1))));
        while (std::getline(lines, made))
            shown += "    " + packed(made) + "\n";
    }
    EXPECT_EQ(shown, sampleFile(file));
    EXPECT_NE(shown, "") << file;
}
