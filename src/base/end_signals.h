// The signals that ask an interactive run to end: SIGHUP, SIGINT, SIGQUIT and SIGTERM.
//
// The run ends with a message where it next looks for one, at the latest before it waits for input.
// One that does not come to that, as its terminal takes no output, is ended where it is after half
// a second: nothing more is written, but the terminal gets its modes back.
#pragma once

#include <csignal>

// From now on the signals are caught, those that were ignored apart. The terminal, that of standard
// output or else of standard error, has the modes that it is to get back.
void catchEndSignals();

// Ends the process with a message when one of the signals has come.
void endOnSignal();

// While it lives the signals wait, and so does the end after half a second: what is begun then is
// finished.
class EndSignalsHeld {
  public:
    EndSignalsHeld();
    EndSignalsHeld(const EndSignalsHeld &) = delete;
    EndSignalsHeld &operator=(const EndSignalsHeld &) = delete;
    ~EndSignalsHeld();

  private:
    sigset_t before;
};

// Lets the signals in, held or not: what is left of the run may wait for the terminal.
void admitEndSignals();
