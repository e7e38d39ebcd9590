#pragma once

namespace fieldline {

// The terminal that a command-line program was started on. Used by the command; not part of the library.

enum class Stream { kInput, kOutput, kError };

bool IsTerminal(Stream stream);

struct TerminalSize {
  int columns;
  int rows;
};

// Size of the terminal on `stream`; 80 columns and 24 rows when it is not a terminal.
TerminalSize SizeOfTerminal(Stream stream);

// From now on Ctrl-C or a termination request sets a flag instead of ending the program. A second one ends the program.
void CatchInterrupts();
bool Interrupted();

// Sleeps for at most `ms` milliseconds. Returns early, with false, when interrupted.
bool SleepUnlessInterrupted(int ms);

}  // namespace fieldline
