// The smaller promises of the platform that need the system's own calls to be put to the test.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <ctime>

#include "fieldline/platform/clock.h"
#include "fieldline/platform/console.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/platform/digital_inputs.h"
#include "fieldline/platform/file.h"
#include "fieldline/platform/path_buffer.h"
#include "tests/support/temp_directory.h"

namespace fieldline {
namespace {

// "-" for a name without a path.
std::string PathOf(const wchar_t* device) {
  PathBuffer path;
  return FindDevicePath(device, path) ? path : "-";
}

TEST(DevicePathTest, NamesHaveDefaults) {
  const std::pair<const wchar_t*, const char*> kCases[] = {
      {L"ESL1:",           "/dev/ttyESL1" },
      {L"ESL8:",           "/dev/ttyESL8" },
      {L"COM1:",           "/dev/ttyS0"   },
      {L"COM10:",          "/dev/ttyS9"   },
      {L"EIO1:",           "/dev/eio1"    },
      {L"/dev/ttyUSB0:",   "/dev/ttyUSB0" },
      {L"./a:b:",          "./a:b"        },
      {L"/\x6E29:",        "/\xE6\xB8\xA9"},
      {L"COM0:",           "-"            },
      {L"COM:",            "-"            },
      {L"COM-1:",          "-"            },
      {L"COM1",            "-"            },
      {L"COM1x:",          "-"            },
      {L"COM01:",          "-"            },
      {L"com1:",           "-"            },
      {L"COM99999999999:", "-"            },
      {L"EIO2:",           "-"            },
      {L"CO:",             "-"            },
      {L":",               "-"            },
      {L"",                "-"            },
      {L"/dev/ttyUSB0",    "-"            },
      {nullptr,            "-"            }
  };
  for (const auto& [device, path] : kCases) EXPECT_EQ(path, PathOf(device)) << testing::PrintToString(device);
  EXPECT_EQ("-", PathOf((L"/" + std::wstring(sizeof(PathBuffer), L'a') + L":").c_str()));
}

TEST(DevicePathTest, AMappingHoldsUntilItIsTakenBack) {
  EXPECT_EQ(1, MapDevice(L"ESL3:", "/dev/ttyUSB0"));
  EXPECT_EQ(1, MapDevice(L"/dev/x:", "/dev/y"));
  EXPECT_EQ("/dev/ttyUSB0", PathOf(L"ESL3:"));
  EXPECT_EQ("/dev/y", PathOf(L"/dev/x:"));
  EXPECT_EQ("/dev/ttyESL4", PathOf(L"ESL4:"));
  EXPECT_EQ(1, MapDevice(L"ESL3:", "/dev/ttyUSB1"));
  EXPECT_EQ(0, MapDevice(L"ESL3", "/dev/ttyUSB2"));
  EXPECT_EQ(0, MapDevice(nullptr, "/dev/ttyUSB2"));
  EXPECT_EQ("/dev/ttyUSB1", PathOf(L"ESL3:"));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(1, MapDevice(L"ESL3:", nullptr));
  EXPECT_EQ(1, MapDevice(L"/dev/x:", nullptr));
  EXPECT_EQ("/dev/ttyESL3", PathOf(L"ESL3:"));
  EXPECT_EQ("/dev/x", PathOf(L"/dev/x:"));
}

TEST(DigitalInputsPosixTest, ADeviceWithoutAByteIsWaitedForButNotLong) {
  const TempDirectory directory;
  const std::string pipe = directory.Path("pipe");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  const std::wstring device = std::wstring(pipe.begin(), pipe.end()) + L":";
  BYTE states = 0x55;
  EXPECT_FALSE(ReadDigitalInputs(device.c_str(), &states)) << "nobody will ever write";
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(ReadDigitalInputs(device.c_str(), &states)) << "nothing was written";
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
  EXPECT_EQ(0x55, states);
  EXPECT_EQ(1, write(writer, "\x0F", 1));
  EXPECT_TRUE(ReadDigitalInputs(device.c_str(), &states));
  EXPECT_EQ(0x0F, states);
  close(writer);
}

TEST(FilePosixTest, FullDisksAndPipes) {
  const TempDirectory directory;
  std::filesystem::create_symlink("/dev/full", directory.Path("full"));
  ASSERT_EQ(0, mkfifo(directory.Path("pipe").c_str(), 0600));
  ASSERT_EQ(1, SetFlashRoot(directory.Path().c_str()));
  const BYTE bytes[10] = {};
  File file;
  ASSERT_TRUE(file.Create(u"\\full"));
  EXPECT_EQ(0, file.Write(bytes, 10));
  file.Close();
  EXPECT_FALSE(file.Create(u"\\pipe")) << "must not wait for a reader";
  SetFlashRoot(nullptr);
}

TEST(ClockPosixTest, LocalTimeFollowsTheTimeZone) {
  const char* const former = getenv("TZ");
  const std::string kept = former != nullptr ? former : "";
  for (const char* zone : {"UTC0", "FIVEWEST5", "EAST-5:30"}) {
    setenv("TZ", zone, 1);
    const std::time_t before = std::time(nullptr);
    const CalendarTime now = LocalTime();
    std::tm calendar{};
    calendar.tm_year = now.year - 1900;
    calendar.tm_mon = now.month - 1;
    calendar.tm_mday = now.day;
    calendar.tm_hour = now.hour;
    calendar.tm_min = now.minute;
    calendar.tm_sec = now.second;
    const std::time_t told = std::mktime(&calendar);
    EXPECT_GE(told, before) << zone;
    EXPECT_LE(told, std::time(nullptr)) << zone;
  }
  former != nullptr ? setenv("TZ", kept.c_str(), 1) : unsetenv("TZ");
}

TEST(ConsoleTest, TheFirstInterruptsAreToldAndTheThirdEndsTheProgram) {
  const pid_t child = fork();
  if (child == 0) {
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDOUT_FILENO);
    if (IsTerminal(Stream::kOutput) || SizeOfTerminal(Stream::kOutput).columns != 80) _exit(1);
    CatchInterrupts();
    if (Interrupted() || !SleepUnlessInterrupted(1)) _exit(2);
    raise(SIGINT);
    if (!Interrupted() || SleepUnlessInterrupted(3'600'000)) _exit(3);
    raise(SIGHUP);
    if (InterruptCount() != 2) _exit(4);
    raise(SIGTERM);
    _exit(5);
  }
  ASSERT_GT(child, 0);
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  ASSERT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
  EXPECT_EQ(SIGTERM, WTERMSIG(status));
}

}  // namespace
}  // namespace fieldline
