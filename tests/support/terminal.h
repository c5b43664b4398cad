// The real program at the keyboard: it runs in a private root and a pseudo-terminal, and an
// emulator of a terminal shows what it draws. Rows and columns count from 0.
//
// Nothing sleeps: an operation returns when the program waits for its next key with all earlier
// ones read and all it wrote drawn, or when it has ended. One that does not come to rest within
// 10 s fails the test, and so does a text that does not appear; both show the screen.
#pragma once

#include <vterm.h>

#include <functional>
#include <optional>
#include <utility>

#include "support/private_root.h"
#include "support/temp_dir.h"

class TerminalTest : public TempDirTest {
  protected:
    ~TerminalTest() override; // ends the program if it still runs

    // Stages the private root, "root" below the current directory; skips the test where it cannot
    // be entered.
    void SetUp() override;

    // Starts the program in a new terminal and waits for its first question; a program started
    // earlier is ended.
    void start(const Arguments &arguments = {}, const Environment &environment = {});

    // Runs the program without a terminal.
    RunResult run(const Arguments &arguments, const Environment &environment = {},
                  User user = User::ROOT);

    // Sends keys one by one. "<Up>", "<Down>", "<Enter>", "<Esc>", "<Backspace>" (8), "<Delete>"
    // (127) and "<Space>" are keys; any other character is itself, and "<c>" is the character c.
    void press(std::string_view keys);

    // Waits until a row contains `text`, however marked.
    void waitFor(const std::string &text);

    void resize(int newLines, int newColumns);

    // Takes the terminal away: the program, without SIGHUP as under nohup, reads an end of input.
    void closeInput();

    // Waits for the end of the program; its exit status as a shell gives it.
    int exitStatus();

    // Rows `first` to `last`, each without the blanks at its end and with a line end. Bold text
    // stands in {b:}, reverse in {r:}, both in {br:}; line drawing is UTF-8.
    std::string rows(int first, int last) const;
    std::string screen() const;         // all rows
    std::pair<int, int> cursor() const; // row, column

    int lines = 24, columns = 80; // size of the terminal that start() makes
    bool errorsToFile = false;    // standard error goes to the file "errors", not to the terminal
    bool alternateScreen = false; // the emulator shows the alternate screen
    std::string output;           // all bytes that the terminal got since start()

  private:
    void openTerminal();
    void stop();
    void waitUntil(const std::function<bool()> &done, const std::string &complaint);
    void settle(const std::string &cause);
    bool feed(int wait);
    void send(const std::string &bytes);
    std::string keyBytes(const std::string &key);
    bool ended();
    std::string rowText(int row, bool marked) const;
    VTermScreenCell cellAt(int row, int column) const;
    std::string cellText(int row, int column) const;

    VTerm *emulator = nullptr;
    VTermScreen *display = nullptr;
    std::string replies; // what the emulator wants to send: keys, answers to queries
    int master = -1;
    int slave = -1;            // kept open to look into the program's input queue
    pid_t program = 0;         // 0: none was started
    std::optional<int> status; // set once the program has ended
};
