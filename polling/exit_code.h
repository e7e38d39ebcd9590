#pragma once

namespace fieldline {

// Exit status of the command. `fieldline --help` lists them.
enum class ExitCode {
  kGood = 0,          // every poll was answered and accepted
  kSomeFailed = 1,    // some polls failed, or all for different reasons, or the verb was interrupted
  kUsage = 2,         // an argument is wrong; nothing was done
  kNoLine = 3,        // the line can't be opened, or it is gone
  kNoAnswer = 4,      // nothing answered
  kRefusedReply = 5,  // the reply is not the one that was asked for
  kNoOutput = 6,      // an output can't be written
};

constexpr int ToStatus(ExitCode code) { return static_cast<int>(code); }

}  // namespace fieldline
