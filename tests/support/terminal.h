// The real program at the keyboard: it runs in a private root and a pseudo-terminal, and an
// emulator of a terminal shows what it draws. Rows and columns count from 0.
//
// Nothing sleeps: an operation returns when the program waits for its next key with all earlier
// ones read and all it wrote drawn, or when it has ended. One that does not come to rest within
// 30 s fails the test, and the failure shows the screen.
#pragma once

#include <vterm.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "support/private_root.h"
#include "support/temp_dir.h"

class TerminalTest : public TempDirTest {
  protected:
    // Makes the private root with the program and its data files and without a configuration; skips
    // the test where it cannot be entered.
    TerminalTest();
    ~TerminalTest() override; // ends the program if it still runs

    // Starts a program in a new terminal; one that was started earlier is ended.
    void start(const Words &words = {});

    // Sends keys one by one: a character, or "<Up>", "<Down>", "<Enter>", "<Esc>", "<Space>" or
    // "<Erase>" (control-H); "<Down*3>" three times.
    void press(std::string_view keys);

    void send(const std::string &bytes); // all at once; the program may end amid them
    void type(const std::string &bytes); // does not wait for what becomes of them
    void resize(unsigned short newLines, unsigned short newColumns);
    void closeInput(); // takes the terminal away: the program reads an end of input
    void stop();       // ends the program if it still runs
    bool ended();
    int exitStatus(); // waits for the end; as a shell gives it
    void settle(const std::string &cause);

    // Waits until `done`; past 30 s the test fails for `complaint`.
    void waitUntil(const std::function<bool()> &done, const std::string &complaint);

    // Rows `first` to `last`, each without the blanks at its end and with a line end. Bold text
    // stands in {b:}, reverse in {r:}, both in {br:}; line drawing is UTF-8.
    std::string rows(int first, int last) const;
    std::string screen() const;         // all rows
    std::pair<int, int> cursor() const; // row, column

    const std::filesystem::path root = directory / "root", korvel = root / "usr/lib/X11/Korvel",
                                config = root / "etc/X11/Xconfig",
                                temporary = root / "etc/X11/Xconfig.tmp";
    unsigned short lines = 24, columns = 80; // size of the terminal that start() makes
    bool hangsUp = false;     // the program gets SIGHUP; else it is ignored, as under nohup
    bool errorsToFile = true; // standard error goes to the file "errors", not to the terminal
    pid_t program = 0;        // 0: none was started
    int slave = -1;           // the program's end of the terminal

  private:
    bool feed(int wait);

    std::unique_ptr<VTerm, decltype(&vterm_free)> emulator{nullptr, vterm_free};
    int master = -1;
    std::string output;        // all bytes that the terminal got since start()
    std::optional<int> status; // set once the program has ended
};
