#pragma once

namespace fieldline {

// What a command-line program asks of the terminal it was started on. Used by the command; not part of the library.

enum class Stream { kInput, kOutput, kError };

bool IsTerminal(Stream stream);

struct TerminalSize {
  int columns;
  int rows;
};

// Of the terminal on `stream`; 80 columns and 24 rows where there is none.
TerminalSize SizeOfTerminal(Stream stream);

// From now on Ctrl-C and a termination request set a flag in place of ending the program; a second one ends it.
void CatchInterrupts();
bool Interrupted();

// Sleeps up to `ms`; returns early, with false, when interrupted.
bool SleepUnlessInterrupted(int ms);

}  // namespace fieldline
