#pragma once

namespace fieldline {

// The terminal that a command-line program was started on. Used by the command; not part of the library.

enum class Stream { kInput, kOutput, kError };

bool IsTerminal(Stream stream);

// Whether `stream` is a pipe that nobody reads any more. A write to it would tell, too; this is for who writes seldom.
bool IsUnread(Stream stream);

struct TerminalSize {
  int columns;
  int rows;
};

// Size of the terminal on `stream`; 80 columns and 24 rows when it is not a terminal.
TerminalSize SizeOfTerminal(Stream stream);

// Call this first. A stream that is closed at the start is occupied, so that no file that is opened later takes its
// place and gets what was meant for it; writing to it fails. A write to a pipe that nobody reads fails, too, and does
// not end the program.
void PrepareStreams();

// From now on Ctrl-C, a termination request and a hang-up set a flag in place of ending the program; the third ends it.
// Ctrl-C and hang-ups that were ignored at the start, as nohup and a shell's "&" do, stay ignored. Only the first call
// counts.
void CatchInterrupts();
bool Interrupted();

// How many came, without those of Interrupt().
int InterruptCount();

// Does what the first Ctrl-C does; for a reason of the program's own. May be called from any thread.
void Interrupt();

// Sleeps for at most `ms` milliseconds. Returns early, with false, when interrupted.
bool SleepUnlessInterrupted(int ms);

// From now on a hang-up asks for files to be opened anew in place of interrupting, even if hang-ups were ignored: who
// calls this has a file to open. After CatchInterrupts().
void CatchReopenRequests();

// The signal that asks for it, as help names it; null on a system that has none.
extern const char* const kReopenSignal;

// Whether that was asked for since the last call.
bool TakeReopenRequest();

}  // namespace fieldline
