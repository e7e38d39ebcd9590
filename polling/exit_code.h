#pragma once

namespace fieldline {

// How the command ends; listed under `fieldline --help`.
enum class ExitCode {
  kGood = 0,          // every poll was answered and accepted
  kSomeFailed = 1,    // some polls failed, or all for different reasons; or the verb was cut short
  kUsage = 2,         // an argument is wrong; nothing was done
  kNoLine = 3,        // the line can't be opened, or it vanished
  kNoAnswer = 4,      // nothing answered
  kRefusedReply = 5,  // what came is not the reply that was asked for
  kNoOutput = 6,      // an output can't be written
};

constexpr int ToStatus(ExitCode code) { return static_cast<int>(code); }

}  // namespace fieldline
