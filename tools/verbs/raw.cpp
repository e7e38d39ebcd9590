#include <algorithm>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fieldline/platform/console.h"
#include "fieldline/serial/ser_base.h"
#include "polling/diagnosis.h"
#include "polling/line/recorder.h"
#include "polling/line/trace_output.h"
#include "polling/protocol/protocol.h"
#include "polling/text.h"
#include "tools/options/duration_option.h"
#include "tools/options/line_option.h"
#include "tools/options/number_option.h"
#include "tools/options/output_option.h"
#include "tools/output/progress.h"
#include "tools/output/report.h"
#include "tools/verbs/raw_frame.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline raw --port /dev/ttyUSB0:9600,n,8,1 01 03 00 00 00 02 --append crc16\n"
    "  fieldline raw --port /dev/ttyUSB0:2400,n,8,1 --text 'Q1\\r'\n"
    "  fieldline raw --port /dev/ttyUSB0:9600,n,8,1 20 01 46 41 01 --append hex-ascii\n"
    "  fieldline raw --port /dev/ttyUSB0:115200,n,8,1 06 --append alarm --read 7 --json";

constexpr char kUsualSettings[] = "9600,n,8,1";
constexpr int kMostBytes = 65536;  // to send, and to receive
constexpr ReadTimeout kUsualTimeout = {6, 100};

struct Arguments {
  LineArguments line;
  std::vector<std::string> bytes;
  std::string text;
  std::string append;
  int read = 0;  // bytes; 0: until the line is silent
  std::chrono::milliseconds wait{1000};
  OutputArguments output;
};

std::string Printable(std::span<const BYTE> bytes) {
  std::string text;
  for (const BYTE c : bytes) text += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '.';
  return text;
}

// Reads single bytes. After the first byte, a read that times out means that the line is silent.
Bytes ReadUntilSilence(ISerBase& port, const Arguments& arguments, const ReadTimeout& timeout) {
  const auto silence = std::max(1, timeout.per_byte + timeout.constant);
  Bytes reply;
  for (long left = std::max(1L, static_cast<long>(arguments.wait.count()) / silence);
       left > 0 && reply.size() < kMostBytes && !Interrupted();) {
    BYTE byte;
    if (port.Read(&byte, 1) == 1) {
      reply.push_back(byte);
      left = 1;
    } else {
      --left;
    }
  }
  return reply;
}

Bytes Receive(ISerBase& port, const Arguments& arguments, const ReadTimeout& timeout) {
  if (arguments.read == 0) return ReadUntilSilence(port, arguments, timeout);
  Bytes reply(static_cast<std::size_t>(arguments.read));
  reply.resize(static_cast<std::size_t>(std::max(0, port.Read(reply.data(), arguments.read))));
  return reply;
}

void Dump(const Bytes& bytes) {
  constexpr std::size_t kPerLine = 16;
  for (std::size_t i = 0; i < bytes.size(); i += kPerLine) {
    const auto line = std::span(bytes).subspan(i, std::min(kPerLine, bytes.size() - i));
    std::cout << std::left << std::setw(3 * kPerLine + 1) << Hex(line) << Printable(line) << '\n';
  }
}

// Passes bytes unchecked. The destructor closes the line.
class RawPort final : public CSerBase {
 public:
  explicit RawPort(Recorder& recorder) : CSerBase(SER_COM) { InsertObserver(&recorder); }
  ~RawPort() { Close(); }
};

ExitCode Run(const Arguments& arguments) {
  if (arguments.bytes.empty() == arguments.text.empty()) {
    throw UsageError("which bytes? write them in hexadecimal, such as 01 03, or --text 'Q1\\r'");
  }
  const Bytes bytes = arguments.text.empty() ? ParseHexBytes(arguments.bytes) : ParseEscapes(arguments.text);
  const Bytes request = MakeFrame(arguments.append, bytes);
  if (request.size() > kMostBytes) {
    throw UsageError("these are " + std::to_string(request.size()) + " bytes; send at most " +
                     std::to_string(kMostBytes));
  }
  LineConfig line = ResolveLine(arguments.line, kUsualSettings);
  if (!line.timeout) line.timeout = kUsualTimeout;
  TraceOutput trace(arguments.output.trace);
  Recorder recorder(&trace);
  RawPort port(recorder);

  const Time time = std::chrono::system_clock::now();
  port.SetTimeout(line.timeout->per_byte, line.timeout->constant);
  std::optional<Failure> failure;
  if (port.Open(line.definition.c_str()) == 0) failure = DiagnoseOpen(port, line);
  const auto began = std::chrono::steady_clock::now();
  Bytes reply;
  if (!failure) {
    Progress progress(&port, arguments.output.ShowsProgress());
    progress.Begin("raw");
    const int size = static_cast<int>(request.size());
    if (port.Write(request.data(), size) == size) {
      reply = Receive(port, arguments, *line.timeout);
      if (reply.empty() && port.Purge() == 0) {
        failure = Failure{ExitCode::kNoLine, "line_gone", "the line is gone; was the adapter unplugged?"};
      } else if (reply.empty()) {
        failure = Failure{ExitCode::kNoAnswer, "no_answer", "nothing answered"};
      }
    } else {
      failure = Failure{ExitCode::kNoLine, "not_sent", "the bytes could not be sent"};
    }
    if (failure) failure->request = request;
  }
  const std::chrono::duration<double, std::milli> duration = std::chrono::steady_clock::now() - began;

  const std::string meaning = DescribeReply(request, reply);
  if (arguments.output.json) {
    ordered_json json;
    json["schema"] = kJsonSchema;
    json["time"] = IsoTime(time);
    json["port"] = line.shown;
    json["ok"] = !failure.has_value();
    json["duration_ms"] = std::round(duration.count() * 1000) / 1000;
    json["request"] = Hex(request);
    if (failure) {
      json["error"] = FailureToJson(*failure);
    } else {
      json["reply"] = Hex(reply);
      json["text"] = Printable(reply);
      json["meaning"] = meaning.empty() ? ordered_json() : ordered_json(meaning);
    }
    PrintJson(json);
  } else if (failure) {
    ShowFailure(line.shown, *failure);
  } else {
    if (!arguments.output.quiet) std::cerr << "sent " << Hex(request) << '\n';
    Dump(reply);
    if (!meaning.empty()) std::cout << ForTerminal(meaning) << '\n';
    std::cout << std::flush;
  }
  return failure ? failure->exit : ExitCode::kGood;
}

}  // namespace

Verb AddRaw(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("raw", "Send bytes and show what comes back");
  command.footer(kExamples);
  command.add_option("BYTES", arguments->bytes, "Bytes to send, in hexadecimal")->type_name("");
  command.add_option("--text", arguments->text, "Text to send instead, with the escapes \\r, \\n, \\\\ and \\xNN");
  command
      .add_option(
          "--append", arguments->append,
          "Complete the bytes: crc16 appends the CRC of Modbus RTU, hex-ascii makes a YD/T 1363 frame of VER ADR "
          "CID1 CID2 INFO, alarm makes a frame of the alarm board of command and payload")
      ->type_name("crc16|hex-ascii|alarm");
  AddLineOptions(command, arguments->line);
  AddNumber(command, "--read", 1, kMostBytes,
            "Number of bytes to read [until the line is silent for one byte's time-out, at most 65536]",
            [arguments](int count) { arguments->read = count; });
  AddDuration(command, "--wait", "Time to wait for the first byte, without --read [1s]",
              [arguments](std::chrono::milliseconds wait) { arguments->wait = wait; });
  AddOutputOptions(command, arguments->output);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
