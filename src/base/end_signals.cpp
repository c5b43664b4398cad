#include "base/end_signals.h"

#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include "base/messages.h"

static constexpr std::array END_SIGNALS = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};
static constexpr itimerval END_GRACE = {{}, {0, 500'000}}; // µs, once

static volatile std::sig_atomic_t endSignal = 0; // the signal that has come; 0: none has
static int terminalNumber = STDOUT_FILENO;       // where curses sets the modes
static termios shellModes;

// From the background to set the terminal's modes would stop the process and not end it.
static void noteSignal(int number) {
    std::signal(SIGTTOU, SIG_IGN);
    endSignal = number;
    setitimer(ITIMER_REAL, &END_GRACE, nullptr);
}

// The modes are set at once: to wait for the output would be to wait for the terminal again.
static void endAtOnce(int) {
    tcsetattr(terminalNumber, TCSANOW, &shellModes);
    _exit(EXIT_FAILURE);
}

static bool isIgnored(int number) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

// System calls go on after a signal, the waits for input apart, which never do.
static void catchSignal(int number, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

// Those that belong together: the timer is set by the others.
static sigset_t endSignalSet() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    for (const int number : END_SIGNALS)
        sigaddset(&signals, number);
    return signals;
}

void catchEndSignals() {
    if (tcgetattr(terminalNumber, &shellModes) != 0)
        tcgetattr(terminalNumber = STDERR_FILENO, &shellModes);
    catchSignal(SIGALRM, endAtOnce);
    for (const int number : END_SIGNALS)
        if (!isIgnored(number))
            catchSignal(number, noteSignal);
    admitEndSignals();
}

void endOnSignal() {
    if (endSignal != 0)
        fatalError("Ended by a signal: %s\n", strsignal(endSignal));
}

EndSignalsHeld::EndSignalsHeld() {
    const sigset_t signals = endSignalSet();
    sigprocmask(SIG_BLOCK, &signals, &before);
}

EndSignalsHeld::~EndSignalsHeld() { sigprocmask(SIG_SETMASK, &before, nullptr); }

void admitEndSignals() {
    const sigset_t signals = endSignalSet();
    sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}
