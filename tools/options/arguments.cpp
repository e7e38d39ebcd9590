#include "tools/options/arguments.h"

#include <algorithm>

#include "polling/text.h"

namespace fieldline::tool {
namespace {

// Full name of a command, such as "alarm relay". Empty for the program itself.
std::string FullName(const CLI::App& command) {
  const CLI::App* const parent = command.get_parent();
  if (parent == nullptr) return {};
  const std::string before = FullName(*parent);
  return before.empty() ? command.get_name() : before + ' ' + command.get_name();
}

std::vector<std::string> OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::App* from = &command; from != nullptr; from = from->get_parent()) {
    for (const CLI::Option* const option : from->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

std::vector<std::string> OperationNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::App* const operation : command.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(operation->get_name());
  }
  return names;
}

std::string SeeHelp(const CLI::App& command) {
  const std::string name = FullName(command);
  return "; see fieldline " + name + (name.empty() ? "" : " ") + "--help";
}

// Message for an unknown `word`. `candidates` are the words allowed there.
std::string Unknown(const CLI::App& command, const std::string& what, const std::string& word,
                    const std::vector<std::string>& candidates) {
  const std::string name = FullName(command);
  const std::string guess = DidYouMean(word, candidates);
  return (name.empty() ? "no " : name + " has no ") + what + " '" + word + "'" +
         (guess.empty() ? SeeHelp(command) : guess);
}

// Message for an unknown `argument`. `command` is the innermost command that was given.
std::string Unknown(const CLI::App& command, const std::string& argument) {
  if (argument.starts_with('-')) {
    return Unknown(command, "option", argument.substr(0, argument.find('=')), OptionNames(command));
  }
  if (const std::vector<std::string> operations = OperationNames(command); !operations.empty()) {
    return Unknown(command, command.get_parent() == nullptr ? "verb" : "operation", argument, operations);
  }
  return FullName(command) + " expects no '" + argument + "' there" + SeeHelp(command);
}

std::string Reason(const CLI::App& app, const CLI::App& command, const CLI::ParseError& error) {
  const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
  if (code == CLI::ExitCodes::ExtrasError || code == CLI::ExitCodes::RequiredError) {
    for (const std::string& argument : app.remaining(true)) {
      if (argument != "--") return Unknown(command, argument);
    }
  }
  return error.what() + SeeHelp(command);
}

}  // namespace

const Verb* ParseArguments(CLI::App& app, const std::vector<Verb>& verbs, int argc, char** argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // 0 for --help and --version, which CLI11 reports as errors.
    if (error.get_exit_code() == 0) {
      app.exit(error);
      return nullptr;
    }
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
    throw UsageError(Reason(app, *command, error));
  }
  return &*std::ranges::find_if(verbs, [](const Verb& verb) { return verb.command->parsed(); });
}

}  // namespace fieldline::tool
