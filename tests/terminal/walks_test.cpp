// Walks through the program: keys, then the whole screen as a person sees it, and the files that
// are left. A walk is a text file in tests/terminal/walks, one command a line:
//     sh COMMAND            a shell command in the private root's folder, where $SOURCE is the
//                           source tree: makes files, and shows them by its output
//     start [WORDS]         the program in a new terminal of the size set last; words of the form
//                           NAME=value are its environment, the others its arguments
//     run, nobody [WORDS]   a run without a terminal, as root or as another user; a word
//                           /usr/bin/... in front is the program
//     press [KEYS]          as TerminalTest::press, and shows all rows; {b:bold}, {r:reverse}
//     size, resize LINES COLUMNS    of the next terminal; of this one, and shows all rows
//     errors terminal       from now on standard error goes to the terminal
//     # ...                 comment
// Where the program has ended its status and standard error are shown in the place of the rows.
// Each walk goes through terminals of three types; whatever is shown survives that they shrink to
// nothing. Behind a command stands what it shows, each line behind "|". SCRCONF_WALKS=update in the
// environment writes down what is shown now.
#include <algorithm>
#include <cstdlib>
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

// The words of a line, divided into environment and arguments.
static std::pair<Settings, Arguments> divide(std::istringstream &words) {
    std::pair<Settings, Arguments> divided;
    for (std::string word; words >> word;)
        if (word.find('=') != word.npos)
            divided.first.push_back(word);
        else
            divided.second.push_back(word == "''" ? "" : word);
    return divided;
}

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
    auto [settings, arguments] = divide(words);
    if (command == "sh")
        return outputOf("export SOURCE='" SCRCONF_SOURCE_DIR "'; cd root; exec 2>&1; " + rest);
    if (command == "run" || command == "nobody") {
        const User user = command == "run" ? User::ROOT : User::NOBODY;
        const RunResult result = runProgram(arguments, settings, user);
        return "status " + std::to_string(result.status) + "\n" + result.output + result.errors;
    }
    if (command == "errors")
        errorsToFile = arguments.at(0) != "terminal";
    if (command == "start") {
        settings.insert(settings.begin(), "TERM=" + std::get<1>(GetParam()));
        start(arguments, settings);
    }
    if (command == "press")
        press(rest);
    if (command == "resize")
        resize(height, width);
    if (command == "press" || command == "resize" || (command == "start" && ended()))
        return seen();
    return "";
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
    if (std::getenv("SCRCONF_WALKS"))
        writeFile(path, shown);
    else
        EXPECT_EQ(shown, expected);
}

static std::vector<std::string> walkNames() {
    std::vector<std::string> names;
    for (const fs::path &path : fs::directory_iterator(WALKS))
        names.push_back(path.stem());
    std::ranges::sort(names);
    return names;
}

INSTANTIATE_TEST_SUITE_P(, WalksTest,
                         testing::Combine(testing::ValuesIn(walkNames()),
                                          testing::Values("xterm", "linux", "vt100")),
                         [](const auto &walk) {
                             return std::get<0>(walk.param) + "_" + std::get<1>(walk.param);
                         });
