#include <sstream>

#include "sim/room.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

TEST(Command, SaysWhatIsWrongWithAnArgument) {
  const std::pair<const char*, const char*> cases[] = {
      {"",                                         "subcommand is required"                            },
      {"poll",                                     "fieldline: KIND is required; see fieldline poll"   },
      {"pol envir",                                "fieldline: no verb 'pol'; did you mean poll?"      },
      {"alarm --port COM1 rely 1 1",               "alarm has no operation 'rely'; did you mean relay?"},
      {"poll envir --jsno=3",                      "poll has no option '--jsno'; did you mean --json?" },
      {"poll evnir --port COM1",                   "no kind \"evnir\"; did you mean envir?"            },
      {"poll envir --interval 25h",                "5m, 72h or 90d, up to 1d; not \"25h\""             },
      {"poll toaster --port COM1",                 "the kinds are envir, "                             },
      {"poll alarm --port COM1",                   "see fieldline alarm --help"                        },
      {"poll ups --address 1 --port COM1",         "ups has no address; leave out"                     },
      {"poll envir",                               "such as --port /dev/ttyUSB0:2400,n,8,1"            },
      {"poll envir --port COM0",                   "\"COM0\" is not a device name: write COM1"         },
      {"poll envir --port com1",                   "\"com1\" is not a device name"                     },
      {"poll envir --port COM1:9600,n,8",          "four fields are needed, not 3"                     },
      {"poll envir --port COM1:9600,n,8,1,0",      "four fields are needed, not 5"                     },
      {"poll envir --port COM1:fast,n,8,1",        "the speed is a number"                             },
      {"poll envir --port COM1:0,n,8,1",           "the speed is a number"                             },
      {"poll envir --port COM1:9600,x,8,1",        "the parity is n, o, e, m or s"                     },
      {"poll envir --port COM1:9600,n,9,1",        "the data bits are 5, 6, 7 or 8"                    },
      {"poll envir --port COM1:9600,n,8,3",        "the stop bits are 1, 1.5 or 2"                     },
      {"poll envir --port /dev/null:9600,n",       "four fields are needed, not 2"                     },
      {"poll envir --port COM1 --address 256",     "a number from 0 to 255 is needed, not \"256\""     },
      {"poll envir --port COM1 --address -1",      "a number from 0 to 255"                            },
      {"poll envir --port COM1 --address 1x",      "a number from 0 to 255"                            },
      {"poll envir --port COM1 --count many",      "a number from 0 to"                                },
      {"poll envir --port COM1 --timeout 6",       "write PER_BYTE,CONSTANT in ms"                     },
      {"poll envir --port COM1 --map COM1",        "write DEVICE=PATH"                                 },
      {"sim --all ups",                            "leave out the kinds, or --all"                     },
      {"sim --baud 9600",                          "--baud needs a KIND"                               },
      {"sim toaster",                              "there are envir, "                                 },
      {"sim envir --set heat=1",                   "there are humidity, temperature"                   },
      {"sim envir --set temperature=hot",          "is not a number from"                              },
      {"sim envir --set temperature",              "write NAME=VALUE"                                  },
      {"sim envir --fault melt",                   "drop, corrupt, truncate, noise, trail, repeat, "   },
      {"sim envir --fault drop:every=0",           "corrupt:every=3"                                   },
      {"sim envir --fault drop:p=1.5",             "corrupt:every=3"                                   },
      {"sim envir ups --one-line",                 "ups has no address"                                },
      {"sim envir envir --one-line --address 255", "would be above 255"                                },
  };
  for (const auto& [arguments, message] : cases) EXPECT_EQ(ExpectTool(arguments, 2, "", message).out, "") << arguments;
}

TEST(Command, EveryVerbHasHelpWithExamplesAndExitCodes) {
  for (const std::string verb : {"poll", "raw", "scan", "sim", "demo", "kinds", "record"}) {
    EXPECT_THAT(ExpectTool(verb + " --help", 0, "Examples:\n  fieldline " + verb).out, HasSubstr("Exit codes:\n  0 "));
  }
}

// Takes from the simulator's output the command that it suggests for the n-th device.
std::string Suggestion(const std::string& output, int nth) {
  std::size_t start = 0;
  for (int i = 0; i < nth; ++i) start = output.find("\n  fieldline ", start + 1);
  start += std::string("\n  fieldline ").size();
  return output.substr(start, output.find('\n', start) - start);
}

TEST(Sim, SuggestsCommandsThatWork) {
  ToolProcess sim(
      "sim envir elec-y envir --one-line --baud 19200 --address 7 --seed 5 --trace "
      "--set humidity=29.1 --set elec-y.single=4990");
  ASSERT_TRUE(sim.WaitForOutput("poll envir --address 9 --port /dev/pts/"));
  ASSERT_TRUE(sim.WaitForOutput(":19200,n,8,1\nenvir at address 9"));
  EXPECT_THAT(sim.output(), HasSubstr("seed 5\n"));
  const ToolResult probe = ExpectTool(Suggestion(sim.output(), 1) + " --timeout 0,20000", 0, "register_0  291\n");
  EXPECT_THAT(probe.out, StartsWith("envir at address 7 on /dev/pts/"));
  ExpectTool(Suggestion(sim.output(), 2) + " --timeout 0,20000", 0, "single       4990\n");
  sim.Interrupt();
  const ToolResult result = sim.Finish();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr(" -> 07 03 00 00 00 02 C4 6D\n"));
}

TEST(Sim, DamagesRepliesAsAsked) {
  ToolProcess sim("sim envir --fault drop:nth=1 --fault corrupt:p=0,every=2");
  ASSERT_TRUE(sim.WaitForOutput(":2400,n,8,1\n"));
  const std::string poll = Suggestion(sim.output(), 1) + " --timeout 0,1000 --count 3 --interval 0";
  EXPECT_THAT(ExpectTool(poll, 1, "", "fieldline: envir at address 1: nothing answered within ").err,
              HasSubstr("3 polls, 1 good, 2 failed (1 checksum, 1 no_answer); "));
}

// What differs from run to run.
std::string WithoutNumbers(std::string text) {
  std::erase_if(text, [](char c) { return c == '\r' || c == ' ' || (c >= '0' && c <= '9'); });
  return text;
}

TEST(EveryVerb, SaysTheSameOnAPipeAndOnATerminal) {
  const TempDirectory directory;
  const std::string room = directory.Path("room");
  const std::string site = directory.Path("site.json");
  directory.WriteFile("site.json", R"({"lines": {"A": {"path": ")" + room + R"(/ESL1", "settings": "2400,n,8,1",
                                       "devices": {"aisle": {"kind": "envir", "interval": 0}}}}})");
  ToolProcess sim("sim --json --quiet --links " + room);
  ASSERT_TRUE(sim.WaitForOutput("fieldline poll di --map EIO1=" + room + "/EIO1\"}\n"));
  const std::string to_probe = kPatiently + room + "/ESL1";
  // Without a text for the standard error there is none.
  const auto expect = [&](const std::string& words, int status, const char* out, const char* err) {
    const ToolResult pipe = ExpectTool(words, status, out, err);
    EXPECT_EQ(pipe.err.empty(), *err == '\0') << words << pipe.err;
    EXPECT_EQ((pipe.out + pipe.err).find('\033'), std::string::npos) << words;
    const ToolResult terminal = RunTool(words, Output::kTerminals);
    EXPECT_EQ(terminal.status, status) << words;
    EXPECT_EQ(WithoutNumbers(terminal.out), WithoutNumbers(pipe.out)) << words;
  };
  expect("poll envir" + to_probe, 0, "\n  register_1  ", "");
  expect("poll envir --timeout 0,100 --address 9 --port " + room + "/ESL1", 4, "", "envir at address 9: nothing");
  expect("poll di --map EIO1=" + room + "/EIO1", 0, "\n  input_1..8  ", "");
  expect("poll di --json --map EIO1=" + room + "/EIO1", 0, "\"address\":null,\"port\":null", "");
  expect("poll di --map EIO1=/dev/no-inputs", 3, "", "EIO1: can't be read");
  expect("poll card --json --timeout 0,400 --port " + room + "/COM2", 0, "\"address\":null,\"port\":\"/", "");
  expect("test-port envir@2" + to_probe, 0, "\n  register_1  ", "");
  expect("alarm signal" + (kPatiently + room) + "/COM3", 0, "\n  signal_quality  ", "");
  expect("display page 1 --port " + room + "/COM4", 0, "display page sent on ", "");
  expect("scan envir --quiet --from 1 --to 1" + to_probe, 0, "address 1: envir, ", "");
  expect("raw 010300000002 --append crc16 --timeout 0,400 --port " + room + "/ESL1:2400,n,8,1", 0, "CRC good\n",
         "sent 01 03");
  expect("watch --json --count 1 " + site, 0, "\"device\":\"aisle\"", "aisle: 1 poll, 1 good");
  expect("watch --json --count 1 --quiet " + site, 0, "\"device\":\"aisle\"", "");
  expect("kinds", 0, "power-unit  power unit", "");
  expect("record leak --json", 0, "\"name\":\"leak\"", "");
  expect("sim --list", 0, "  temperature = ", "");
  expect("poll leak --port COM9x", 2, "", "is not a device name");

  std::istringstream kinds(RunTool("sim --list --json").out);
  std::size_t numbers = 0;
  for (std::string kind; std::getline(kinds, kind);) {
    const json listed = json::parse(kind);
    for (const json& value : listed["values"]) {
      numbers += value["max_length"].is_null() && value["minimum"] <= value["value"] ? 1 : 0;
    }
  }
  EXPECT_GT(numbers, 100u);

  RunTool("watch --json --count 1 --trace=" + directory.Path("trace") + ' ' + site);
  EXPECT_THAT(directory.ReadFile("trace"),
              testing::ContainsRegex("(^|\n)20..-..-..T..:..:..\\.......Z A -> 01 03 00 00 00 02 C4 0B\n"));
  sim.Interrupt();
  const ToolResult simulated = sim.Finish();
  EXPECT_EQ(simulated.status, 0);
  EXPECT_EQ(simulated.err, "");
  for (const json& line : Lines(simulated.out)) EXPECT_EQ(line["schema"], 1) << line;
}

TEST(Demo, PollsEveryDevice) {
  ToolProcess people("demo", Output::kTerminals);
  const ToolResult programs = RunTool("demo --json --quiet");
  EXPECT_EQ(programs.status, 0);
  EXPECT_EQ(programs.err, "");
  const std::vector<json> polls = Lines(programs.out);
  const std::string devices = std::to_string(sim::MachineRoom().devices.size());
  EXPECT_EQ(std::to_string(polls.size()), devices);
  for (const json& poll : polls) {
    EXPECT_EQ(poll["ok"], true) << poll;
    EXPECT_GT(poll["duration_ms"], 0) << poll;
  }
  const ToolResult result = people.Finish();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("  -> 01 03 00 00 00 02 C4 0B\r\n  <- 01 03 04 01 C2 00 EB 1A 7C\r\n"));
  EXPECT_THAT(result.out, HasSubstr(devices + " of " + devices + " polls were good, in "));
}

TEST(Terminal, HasProgressColourAndATable) {
  SimulatedLine silent;
  ASSERT_TRUE(silent.Start());
  const std::string poll = "poll envir --timeout 0,1600 --port " + silent.Path();
  const ToolResult result = RunTool(poll, Output::kTerminals);
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("\r\033[Kenvir at address 1: 1 s\r\033[K"));
  EXPECT_THAT(result.err, HasSubstr("\033[31mnothing answered within "));
  EXPECT_THAT(RunTool("poll envir --timeout 0,1 --quiet --port " + silent.Path(), Output::kTerminals).err,
              StartsWith("fieldline: envir"));

  const TempDirectory directory;
  directory.WriteFile("site.json", R"({"lines": {"A": {"path": ")" + silent.Path() + R"(", "settings": "9600,n,8,1",
                                       "timeout": "0,5", "devices": {"rack": {"kind": "envir"}}}}})");
  const ToolResult watch = RunTool("watch --count 1 " + directory.Path("site.json"), Output::kTerminals);
  EXPECT_THAT(watch.out, StartsWith("\033[2J\033[Hline  device  kind   value  age  state  last readings\033[K"));
  EXPECT_THAT(watch.out, HasSubstr("\033[31mA     rack    envir              no_answer x1  ·\033[0m\033[K"));
}

}  // namespace
}  // namespace fieldline::test
