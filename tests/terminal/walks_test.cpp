// Walks through the program: keys, then the whole screen as a person sees it, and the files that
// are left. A walk is a text file in tests/terminal/walks, one command a line:
//     sh COMMAND            a shell command in the private root's folder, where $SOURCE is the
//                           source tree: makes files, and shows them by its output
//     size, resize LINES COLUMNS    of the next terminal; of this one
//     start [WORDS]         the program in a new terminal; words of the form NAME=value are its
//                           environment, the others its arguments, '' an empty one
//     press [KEYS]          as TerminalTest::press
//     run, nobody [WORDS]   a run without a terminal, as root or as another user; a word
//                           /usr/bin/... in front is the program. Status, output and errors
//     errors terminal       from now on standard error goes to the terminal
//     # ...                 comment
// Behind a command stands what it shows, each line behind "|". "press" and "resize" show the screen
// down to its last text, with {b:bold}, {r:reverse} and {br:both}; where the program has ended, as
// also behind "start", its status and errors. Each walk goes through terminals of three types,
// unless a TERM of its own comes first; whatever is shown survives that they shrink to nothing.
// SCRCONF_WALKS=update in the environment writes down what is shown now, of the type run last.
#include <cstdlib>
#include <set>
#include <sstream>

#include "support/terminal.h"

namespace fs = std::filesystem;

static const fs::path WALKS = SCRCONF_SOURCE_DIR "/tests/terminal/walks";

struct WalksTest : TerminalTest, testing::WithParamInterface<std::tuple<std::string, std::string>> {
    void SetUp() override {
        fs::create_directories(root / "usr/bin");
        fs::copy_file(SCRCONF_EDID_PROGRAM, root / "usr/bin/scrconf-edid");
    }
    std::string perform(const std::string &command, std::istringstream &words);
    std::string seen();
};

// The screen, or how the program ended.
std::string WalksTest::seen() {
    const std::string shown = ended() && errorsToFile ? "" : screen();
    const std::string rows = shown.substr(0, shown.find_last_not_of('\n') + 2);
    if (ended())
        return rows + "status " + std::to_string(exitStatus()) + "\n" +
               (errorsToFile ? readFile("errors") : "");
    const auto [height, width] = std::pair(lines, columns);
    const auto place = cursor();
    resize(1, 1);
    resize(height, width);
    EXPECT_EQ(screen(), shown);
    EXPECT_EQ(cursor(), place);
    return rows;
}

// What the command shows.
std::string WalksTest::perform(const std::string &command, std::istringstream &words) {
    std::string rest;
    if (command == "sh" || command == "press")
        std::getline(words >> std::ws, rest);
    unsigned short height = 0, width = 0;
    if (command == "size" || command == "resize")
        words >> height >> width;
    if (command == "size")
        lines = height, columns = width;
    Words list = {"TERM=" + std::get<1>(GetParam())};
    for (std::string word; words >> word;)
        list.push_back(word == "''" ? "" : word);
    if (command == "sh")
        return outputOf("export SOURCE='" SCRCONF_SOURCE_DIR "'; cd root; exec 2>&1; " + rest);
    if (command == "run" || command == "nobody") {
        const RunResult result = runProgram(list, command == "run" ? User::ROOT : User::NOBODY);
        return "status " + std::to_string(result.status) + "\n" + result.output + result.errors;
    }
    if (command == "start") {
        start(list);
        return ended() ? seen() : "";
    }
    if (command == "press")
        press(rest);
    else if (command == "resize")
        resize(height, width);
    else if (command == "errors")
        errorsToFile = false;
    else if (command != "size" && command != "#")
        ADD_FAILURE() << "no command " << command;
    return command == "press" || command == "resize" ? seen() : "";
}

TEST_P(WalksTest, ShowsWhatIsWrittenThere) {
    const fs::path path = WALKS / (std::get<0>(GetParam()) + ".walk");
    const std::string expected = readFile(path);
    std::istringstream walk(expected);
    std::string shown;
    for (std::string line; std::getline(walk, line) && !HasFatalFailure();) {
        if (line.starts_with('|'))
            continue;
        shown += line + "\n";
        std::istringstream words(line), rows;
        std::string command;
        words >> command;
        rows.str(perform(command, words));
        for (std::string row; std::getline(rows, row);)
            shown += "|" + row + "\n";
    }
    const char *wish = std::getenv("SCRCONF_WALKS");
    if (wish && std::string_view(wish) == "update" && !HasFatalFailure())
        writeFile(path, shown);
    else
        EXPECT_EQ(shown, expected);
}

// Each walk and the terminals that it goes through.
static std::set<std::tuple<std::string, std::string>> allWalks() {
    std::set<std::tuple<std::string, std::string>> walks;
    for (const fs::path &path : fs::directory_iterator(WALKS))
        for (const char *type : {"xterm", "linux", "vt100"})
            if (type == std::string_view("xterm") ||
                readFile(path).find("\nstart") != std::string::npos)
                walks.emplace(path.stem(), type);
    return walks;
}

INSTANTIATE_TEST_SUITE_P(, WalksTest, testing::ValuesIn(allWalks()), [](const auto &walk) {
    return std::get<0>(walk.param) + "_" + std::get<1>(walk.param);
});
