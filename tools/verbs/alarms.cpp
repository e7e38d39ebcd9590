#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fieldline/platform/console.h"
#include "polling/site/site.h"
#include "polling/text.h"
#include "tools/output/progress.h"
#include "tools/output/report.h"
#include "tools/output/table.h"
#include "tools/verbs/alarm_replay.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Nothing is polled and nothing is done. Times are those of the log.\n\n"
    "Examples:\n"
    "  fieldline watch site.json --log night.jsonl\n"
    "  fieldline alarms site.json --replay night.jsonl\n"
    "  fieldline alarms site.json --replay night.jsonl --json | jq 'select(.to == \"raised\")'";

constexpr int kMostComplaints = 10;
constexpr int kProgressLines = 1000;

struct Arguments {
  std::string file;
  std::string log;
  bool json = false;
  bool quiet = false;
};

ordered_json ToJson(const AlarmRule& rule, const AlarmChange& change) {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["time"] = IsoTime(change.time);
  json["alarm"] = rule.name;
  json["severity"] = SeverityName(rule.severity);
  json["from"] = StateName(change.from);
  json["to"] = StateName(change.to);
  if (!change.cause) return json;
  json["since"] = IsoTime(change.since);
  json["device"] = change.cause->device;
  json["field"] = change.cause->field.empty() ? ordered_json() : ordered_json(change.cause->field);
  json["value"] = change.cause->number ? ordered_json(*change.cause->number) : ordered_json();
  json["text"] = change.cause->text;
  return json;
}

// The table: a row for each time that an alarm was raised.
class Raises {
 public:
  void Add(const AlarmRule& rule, const AlarmChange& change) {
    if (change.to == AlarmState::kRaised) {
      open_[change.alarm] = rows_.size();
      const std::string subject = change.cause->field.empty() ? "" : change.cause->field + ' ';
      rows_.push_back({IsoTime(change.time), rule.name, std::string(SeverityName(rule.severity)), change.cause->device,
                       subject + change.cause->text, "-"});
    } else if (const auto open = open_.find(change.alarm); change.to == AlarmState::kReturned && open != open_.end()) {
      rows_[open->second].back() = IsoTime(change.time);
      open_.erase(open);
    }
  }

  void Print(std::ostream& out) const {
    if (rows_.size() > 1) PrintTable(out, rows_);
  }

  std::size_t all() const { return rows_.size() - 1; }
  std::size_t open() const { return open_.size(); }

 private:
  std::vector<TableRow> rows_ = {
      {"RAISED", "ALARM", "SEVERITY", "DEVICE", "VALUE", "RETURNED"}
  };
  std::map<std::size_t, std::size_t> open_;  // row by alarm that has not returned
};

class Replay {
 public:
  Replay(const Arguments& arguments, const Site& site) : arguments_(arguments), site_(site), replay_(site) {}

  ExitCode Run() {
    std::ifstream log(arguments_.log);
    std::error_code error;
    if (!log || std::filesystem::is_directory(arguments_.log, error)) {
      throw UsageError(arguments_.log + ": the file can't be read");
    }
    progress_.Begin("replaying " + arguments_.log);
    for (std::string line; !Interrupted() && std::getline(log, line);) Take(line);
    progress_.End();
    if (!arguments_.json) raises_.Print(std::cout);
    if (damaged_ > kMostComplaints) Say(std::to_string(damaged_) + " lines of the log are damaged");
    if (!arguments_.quiet) PrintSummary();
    return damaged_ > 0 || Interrupted() || !replay_.first() ? ExitCode::kSomeFailed : ExitCode::kGood;
  }

 private:
  void Take(const std::string& line) {
    if (++lines_ % kProgressLines == 0) progress_.SetDetail(std::to_string(lines_) + " lines");
    try {
      for (const AlarmChange& change : replay_.Take(line)) {
        const AlarmRule& rule = site_.alarms.rules[change.alarm];
        raises_.Add(rule, change);
        if (arguments_.json) PrintJson(ToJson(rule, change));
      }
    } catch (const UsageError& error) {
      if (++damaged_ <= kMostComplaints) Say(Place() + error.what());
      return;
    }
    if (const auto gap = replay_.gap(); gap && !arguments_.quiet) {
      Say(Place() + (gap->count() < 0 ? "the clock was set back by " : "nothing was logged for ") +
          std::to_string(std::abs(gap->count())) + " s before it; the alarms go on from there");
    }
  }

  std::string Place() const { return arguments_.log + ": line " + std::to_string(lines_) + ": "; }

  void Say(const std::string& text) {
    progress_.Erase();
    Complain(text);
  }

  void PrintSummary() const {
    if (!replay_.first()) {
      std::cerr << "there is no poll in the log\n";
      return;
    }
    std::cerr << replay_.polls() << " polls from " << IsoTime(*replay_.first()) << " to " << IsoTime(replay_.last())
              << "; raised " << raises_.all() << ", not returned " << raises_.open() << '\n';
    const auto& unknown = replay_.unknown_devices();
    if (unknown.empty()) return;
    const std::vector<std::string> names(unknown.begin(), unknown.end());
    std::cerr << ForTerminal("not in the site file: " + Join(names)) << '\n';
  }

  const Arguments& arguments_;
  const Site& site_;
  AlarmReplay replay_;
  Raises raises_;
  Progress progress_{nullptr, !arguments_.quiet};
  long lines_ = 0;
  long damaged_ = 0;
};

ExitCode Run(const Arguments& arguments) {
  const Site site = ReadSite(arguments.file);
  if (site.alarms.rules.empty())
    throw UsageError(arguments.file + ": there is no alarm; \"alarms\" is missing or empty");
  return Replay(arguments, site).Run();
}

}  // namespace

Verb AddAlarms(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("alarms", "Show which alarms of a site a log of watch would have raised");
  command.footer(kExamples);
  command.add_option("FILE", arguments->file, "Site file with alarms, see docs/alarms.md")->type_name("")->required();
  command.add_option("--replay", arguments->log, "Log of watch, a JSON object per line")->type_name("FILE")->required();
  command.add_flag("--json", arguments->json, "One JSON object per line, for each change of state");
  command.add_flag("--quiet", arguments->quiet, "Only errors on standard error");
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
