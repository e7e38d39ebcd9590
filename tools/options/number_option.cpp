#include "tools/options/number_option.h"

#include <optional>
#include <utility>

#include "polling/text.h"

namespace fieldline::tool {

CLI::Option* AddNumber(CLI::App& command, const std::string& name, int low, int high, const std::string& description,
                       std::function<void(int)> store) {
  const auto read = [store = std::move(store), name, low, high](const std::string& text) {
    const std::optional<long> given = ParseInteger(text);
    if (!given || *given < low || *given > high) {
      throw CLI::ValidationError(name, "a number from " + std::to_string(low) + " to " + std::to_string(high) +
                                           " is needed, not \"" + text + "\"");
    }
    store(static_cast<int>(*given));
  };
  return command.add_option_function<std::string>(name, read, description)->type_name("N");
}

}  // namespace fieldline::tool
