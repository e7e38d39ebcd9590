#include "polling/site/alarm_plan.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "polling/kind_name.h"
#include "polling/site/site.h"
#include "polling/text.h"

namespace fieldline {
namespace {

constexpr std::chrono::milliseconds kLeastRepeat = std::chrono::seconds(1);

class PlanReader {
 public:
  explicit PlanReader(const Site& site) : site_(site) {}

  AlarmPlan Read(const JsonNode& node) const {
    AlarmPlan plan;
    if (const auto actions = node.Find("do")) plan.actions = ReadActions(*actions);
    if (const auto repeat = node.Find("repeat")) {
      if (plan.actions.empty()) repeat->Refuse("there is nothing to repeat; \"do\" is missing");
      plan.repeat = repeat->Duration();
      if (*plan.repeat < kLeastRepeat) repeat->Refuse("a time of at least 1s is needed");
    }
    if (const auto until = node.Find("until")) {
      if (!plan.repeat) until->Refuse("\"repeat\" is missing");
      plan.until = ReadUntil(*until);
    }
    if (const auto escalate = node.Find("escalate")) {
      escalate->RequireObject({"after", "do"});
      plan.escalation = {escalate->Get("after").Duration(), ReadActions(escalate->Get("do"))};
    }
    return plan;
  }

 private:
  static RepeatUntil ReadUntil(const JsonNode& node) {
    const std::string until = node.Text();
    if (until == "acknowledged") return RepeatUntil::kAcknowledged;
    if (until == "returned") return RepeatUntil::kReturned;
    node.RefuseAsNot("\"acknowledged\" or \"returned\"");
  }

  std::vector<AlarmAction> ReadActions(const JsonNode& node) const {
    std::vector<AlarmAction> actions;
    for (const JsonNode& action : node.Elements()) {
      action.RequireObject({"sms", "dial", "speech", "relay", "picture", "display", "mqtt"});
      const auto members = action.Members();
      if (members.size() != 1) action.Refuse("one action in each pair of braces is needed");
      const auto& [name, description] = members.front();
      actions.push_back(ReadAction(name, description));
    }
    if (actions.empty()) node.Refuse("an action is needed");
    return actions;
  }

  AlarmAction ReadAction(const std::string& name, const JsonNode& node) const {
    if (name == "mqtt") {
      node.RequireObject({});
      return MqttAction{};
    }
    if (name == "display") {
      RequireControlled(SERDAT_MONITOR, node);
      node.RequireObject({"page"});
      return DisplayAction{static_cast<int>(node.Get("page").Integer(0, 0xFFFF))};
    }
    RequireControlled(SERDAT_ALARM, node);
    if (name == "sms") {
      node.RequireObject({"to", "text"});
      return SmsAction{ReadNumbers(node.Get("to")), ReadText(node.Get("text"))};
    }
    if (name == "dial") {
      node.RequireObject({"to", "text"});
      const auto text = node.Find("text");
      return DialAction{ReadNumber(node.Get("to")), text ? ReadText(*text) : "{alarm}"};
    }
    if (name == "speech") {
      node.RequireObject({"text"});
      return SpeechAction{ReadText(node.Get("text"))};
    }
    if (name == "relay") return ReadRelay(node);
    return ReadPicture(node);
  }

  // The board and the display that the actions need.
  void RequireControlled(ENUM_SERDATKIND kind, const JsonNode& action) const {
    const auto kind_of = [](const ControlledDevice& device) { return device.kind->number; };
    if (std::ranges::find(site_.controlled, kind, kind_of) != site_.controlled.end()) return;
    action.Refuse("it needs a device of kind " + std::string(KindOf(kind).name) + ", and the file has none");
  }

  static RelayAction ReadRelay(const JsonNode& node) {
    node.RequireObject({"number", "state", "while"});
    RelayAction relay{static_cast<int>(node.Get("number").Integer(0, 255)), false};
    const JsonNode state = node.Get("state");
    relay.on = state.Text() == "on";
    if (!relay.on && state.Text() != "off") state.RefuseAsNot("\"on\" or \"off\"");
    if (const auto how_long = node.Find("while")) {
      if (how_long->Text() != "raised" && how_long->Text() != "active")
        how_long->RefuseAsNot("\"raised\" or \"active\"");
      relay.how_long = how_long->Text() == "raised" ? RelayAction::While::kRaised : RelayAction::While::kActive;
    }
    return relay;
  }

  PictureAction ReadPicture(const JsonNode& node) const {
    node.RequireObject({"camera", "mms"});
    const JsonNode camera = node.Get("camera");
    const auto found = std::ranges::find(site_.controlled, camera.Text(), &ControlledDevice::name);
    if (found == site_.controlled.end() || !IsCamera(*found->kind)) {
      camera.Refuse("there is no camera \"" + camera.Text() + "\" in the file");
    }
    return {camera.Text(), ReadNumbers(node.Get("mms"))};
  }

  static std::vector<std::string> ReadNumbers(const JsonNode& node) {
    std::vector<std::string> numbers;
    for (const JsonNode& number : node.Elements()) {
      numbers.push_back(ReadNumber(number));
      if (std::ranges::count(numbers, numbers.back()) > 1) number.Refuse("duplicate number");
    }
    if (numbers.empty()) node.Refuse("a telephone number is needed");
    return numbers;
  }

  static std::string ReadNumber(const JsonNode& node) {
    std::string number = node.Text();
    std::string_view digits = number;
    if (digits.starts_with('+')) digits.remove_prefix(1);
    if (digits.size() < 3 || digits.size() > 20 || digits.find_first_not_of("0123456789") != digits.npos) {
      node.RefuseAsNot("a telephone number (3 to 20 digits, with or without + before them)");
    }
    return number;
  }

  static std::string ReadText(const JsonNode& node) {
    constexpr std::size_t kMost = 400;  // what a frame of the alarm board takes, and room for values
    static const std::array<std::string, 6> kPlaceholders = {"{unit}",   "{alarm}", "{severity}",
                                                             "{device}", "{value}", "{since}"};
    std::string text = node.Text();
    if (text.empty() || text.size() > kMost)
      node.Refuse("a text of 1 to " + std::to_string(kMost) + " bytes is needed");
    for (std::size_t at = text.find('{'); at != text.npos; at = text.find('{', at + 1)) {
      const std::string placeholder = text.substr(at, text.find('}', at) - at + 1);
      if (std::ranges::find(kPlaceholders, placeholder) != kPlaceholders.end()) continue;
      node.Refuse("there is no placeholder " + placeholder + "; there are " + Join(kPlaceholders));
    }
    return text;
  }

  const Site& site_;
};

}  // namespace

AlarmPlan ReadAlarmPlan(const JsonNode& alarm, const Site& site) { return PlanReader(site).Read(alarm); }

}  // namespace fieldline
