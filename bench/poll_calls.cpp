// Polls a kind so many times on a line that takes no time, so that script/count-calls can count the system calls of
// the thread that polls. Pictures go below DIRECTORY.
//
//   bench_poll_calls KIND COUNT DIRECTORY

#include <cstdlib>
#include <iostream>

#include "bench/polled_kind.h"
#include "fieldline/platform/file.h"

int main(int argc, char** argv) {
  const fieldline::Kind* const kind = argc == 4 ? fieldline::FindKind(argv[1]) : nullptr;
  if (kind == nullptr || !kind->IsPolled() || !kind->HasLine()) {
    std::cerr << "usage: bench_poll_calls KIND COUNT DIRECTORY\n";
    return 2;
  }
  fieldline::SetFlashRoot(argv[3]);
  fieldline::bench::PolledKind polled(*kind, {.any_baud = true, .paced = false});
  constexpr int kTimeout = 100;  // ms
  if (!polled.Open(115200, 0, kTimeout)) return 1;
  for (int i = std::atoi(argv[2]); i > 0; --i) {
    if (!polled.Poll()) return 1;
  }
  return 0;
}
