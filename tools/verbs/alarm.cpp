#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/kinds.h"
#include "polling/alarm_board.h"
#include "polling/kind_name.h"
#include "polling/line/trace_output.h"
#include "polling/protocol/alarm_frame.h"
#include "polling/read_file.h"
#include "polling/text.h"
#include "tools/options/line_option.h"
#include "tools/options/number_option.h"
#include "tools/options/output_option.h"
#include "tools/output/progress.h"
#include "tools/output/report.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline alarm status --port /dev/ttyUSB0\n"
    "  fieldline alarm sms 5550100 \"Door open\" --port /dev/ttyUSB0\n"
    "  fieldline alarm mms \"Door open\" door.jpg --port COM1:57600,n,8,1 --map COM1=/dev/ttyUSB0\n"
    "  fieldline alarm relay 1 1 --port /dev/ttyUSB0 --json";

constexpr std::size_t kMostMms = 1 << 20;  // bytes

struct Arguments {
  LineArguments line;
  OutputArguments output;
  // Each operation uses some of these.
  std::string number;
  std::string text;
  std::string file;
  int relay = 0;
  int state = 0;

  std::string data;  // content of the file
};

struct Operation {
  std::string_view name;
  std::string_view description;
  std::vector<std::string_view> arguments;
  int (*run)(IHubAlarm& board, Arguments& arguments, ordered_json& record);  // 0 for success
};

// clang-format off
const Operation kOperations[] = {
    {"id", "Show the identity of the board", {},
     [](IHubAlarm& board, Arguments&, ordered_json& record) {
       DEVICE_ID id{};
       const int failed = board.Alm_get_device_id(&id);
       record["id"] = Hex(id.bytes);
       return failed;
     }},
    {"status", "Show the status of the board", {},
     [](IHubAlarm& board, Arguments&, ordered_json& record) {
       DEVICE_STATUS status{};
       const int failed = board.Alm_get_status(&status);
       record["status"] = Hex(status.bytes);
       return failed;
     }},
    {"signal", "Show the signal quality", {},
     [](IHubAlarm& board, Arguments&, ordered_json& record) {
       char quality = 0;
       const int failed = board.Alm_get_sig_qty(&quality);
       record["signal_quality"] = static_cast<BYTE>(quality);
       return failed;
     }},
    {"requests", "Show the remote requests", {},
     [](IHubAlarm& board, Arguments&, ordered_json& record) {
       DEVICE_REQ requests{};
       const int failed = board.Alm_get_rmt_req(&requests);
       record["requests"] = Hex(requests.bytes);
       return failed;
     }},
    {"inputs", "Show the inputs, a 32-bit word", {},
     [](IHubAlarm& board, Arguments&, ordered_json& record) {
       unsigned long inputs = 0;
       const int failed = board.Alm_read_io(&inputs);
       record["inputs"] = inputs;
       return failed;
     }},
    {"relay", "Switch a relay", {"RELAY", "STATE"},
     [](IHubAlarm& board, Arguments& arguments, ordered_json&) {
       return board.Alm_ctrl_relay(static_cast<BYTE>(arguments.relay), static_cast<BYTE>(arguments.state));
     }},
    {"sms", "Send an SMS and show the board's result", {"NUMBER", "TEXT"},
     [](IHubAlarm& board, Arguments& arguments, ordered_json& record) {
       BYTE result = 0;
       const int failed = board.Alm_send_sms(arguments.number.data(), arguments.text.data(), &result);
       record["result"] = result;
       return failed;
     }},
    {"mms", "Send a file as an MMS", {"TEXT", "FILE"},
     [](IHubAlarm& board, Arguments& arguments, ordered_json& record) {
       record["bytes"] = arguments.data.size();
       return board.Alm_send_mms(arguments.text.data(), reinterpret_cast<BYTE*>(arguments.data.data()),
                                 static_cast<unsigned long>(arguments.data.size()));
     }},
    {"dial", "Call a number and speak a text", {"NUMBER", "TEXT"},
     [](IHubAlarm& board, Arguments& arguments, ordered_json&) {
       return board.Alm_pstn_dial(arguments.number.data(), arguments.text.data());
     }},
    {"speak", "Speak a text locally", {"TEXT"},
     [](IHubAlarm& board, Arguments& arguments, ordered_json&) { return board.Alm_tts_local(arguments.text.data()); }},
    {"set-text", "Set the text to be spoken", {"TEXT"},
     [](IHubAlarm& board, Arguments& arguments, ordered_json&) {
       return board.Alm_set_tts_text(arguments.text.data());
     }},
    {"clear-text", "Clear the text to be spoken", {},
     [](IHubAlarm& board, Arguments&, ordered_json&) { return board.Alm_clr_tts_text(); }},
    {"snapshot", "Send the snapshot text to the board", {"TEXT"},
     [](IHubAlarm& board, Arguments& arguments, ordered_json&) {
       return board.Alm_set_snapshot(arguments.text.data());
     }},
    {"reset-gsm", "Reset the radio", {},
     [](IHubAlarm& board, Arguments&, ordered_json&) { return board.Alm_reset_gsm(); }},
    {"reset-pstn", "Reset the telephone line", {},
     [](IHubAlarm& board, Arguments&, ordered_json&) { return board.Alm_reset_pstn(); }},
};
// clang-format on

// Shows how many bytes of an MMS are sent.
class TransferProgress final : public Progress {
 public:
  TransferProgress(ISerBase* port, bool wanted, std::size_t size) : Progress(port, wanted), size_(size) {}

  void OnSerWrite(const BYTE* data, int count) override {
    const std::size_t bytes = MmsBytesIn({data, static_cast<std::size_t>(count)});
    if (bytes == 0) return;
    sent_ += bytes;
    SetDetail(std::to_string(sent_) + " of " + std::to_string(size_) + " bytes");
  }

 private:
  const std::size_t size_;
  std::size_t sent_ = 0;
};

void RequireFit(std::string_view what, std::size_t bytes) {
  if (bytes <= kMostAlarmPayload) return;
  throw UsageError(std::string(what) + " is too long for a frame: " + std::to_string(bytes) + " bytes with the final " +
                   "zero; at most " + std::to_string(kMostAlarmPayload) + " fit");
}

void CheckArguments(const Operation& operation, Arguments& arguments) {
  RequireFit("NUMBER", arguments.number.size() + 1);
  RequireFit("TEXT", arguments.text.size() + 1);
  if (operation.name == "sms") {
    RequireFit("NUMBER and TEXT together", arguments.number.size() + arguments.text.size() + 2);
  }
  if (!arguments.file.empty()) arguments.data = ReadFile(arguments.file, kMostMms);
}

ExitCode Run(const Operation& operation, Arguments& arguments) {
  CheckArguments(operation, arguments);
  const LineConfig line = ResolveLine(arguments.line, UsualSettings(KindOf(SERDAT_ALARM)));
  TraceOutput trace(arguments.output.trace);
  AlarmBoard board(line, &trace);
  TransferProgress progress(&board.port(), arguments.output.ShowsProgress(), arguments.data.size());
  progress.Begin("alarm " + std::string(operation.name));
  ordered_json record = ordered_json::object();
  const PollResult result =
      board.Run([&](IHubAlarm& controller) { return operation.run(controller, arguments, record); });
  progress.End();
  const std::optional<Failure>& failure = result.failure;

  if (arguments.output.json) {
    ordered_json json = OperationHead("alarm", operation.name, line, result);
    if (!failure) json["record"] = record;
    PrintJson(json);
  } else if (failure) {
    ShowFailure("alarm " + std::string(operation.name), *failure);
  } else {
    std::cout << "alarm " << operation.name << " on " << Escaped(line.shown) << ", "
              << Fixed(result.duration.count(), 1) << " ms\n";
    for (const auto& [name, value] : record.items()) {
      std::cout << "  " << name << "  " << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
    }
    std::cout << std::flush;
  }
  return failure ? failure->exit : ExitCode::kGood;
}

void AddArgument(CLI::App& command, std::string_view name, const std::shared_ptr<Arguments>& arguments) {
  if (name == "RELAY") {
    AddNumber(command, "RELAY", 0, 255, "Number of the relay", [arguments](int relay) {
      arguments->relay = relay;
    })->required();
  } else if (name == "STATE") {
    AddNumber(command, "STATE", 0, 255, "Its new state", [arguments](int state) {
      arguments->state = state;
    })->required();
  } else if (name == "NUMBER") {
    command.add_option("NUMBER", arguments->number, "Telephone number")->type_name("")->required();
  } else if (name == "TEXT") {
    command.add_option("TEXT", arguments->text, "Text, sent as it is written")->type_name("")->required();
  } else if (name == "FILE") {
    command.add_option("FILE", arguments->file, "File to send, up to 1 MiB")->type_name("")->required();
  }
}

}  // namespace

Verb AddAlarm(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("alarm", "Use the alarm board: messages, calls, speech, relays, inputs");
  command.footer(kExamples);
  command.require_subcommand(1);
  AddLineOptions(command, arguments->line);
  AddOutputOptions(command, arguments->output);
  for (const Operation& operation : kOperations) {
    CLI::App& subcommand =
        *command.add_subcommand(std::string(operation.name), std::string(operation.description))->fallthrough();
    for (const std::string_view name : operation.arguments) AddArgument(subcommand, name, arguments);
  }
  return {&command, [&command, arguments] {
            for (const Operation& operation : kOperations) {
              if (command.got_subcommand(std::string(operation.name))) return Run(operation, *arguments);
            }
            return ExitCode::kUsage;
          }};
}

}  // namespace fieldline::tool
