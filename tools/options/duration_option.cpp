#include "tools/options/duration_option.h"

#include <optional>
#include <utility>

namespace fieldline::tool {

void AddDuration(CLI::App& command, const std::string& name, const std::string& description,
                 std::function<void(std::chrono::milliseconds)> store, std::chrono::milliseconds most) {
  const auto read = [store = std::move(store), name, most](const std::string& text) {
    const std::optional<std::chrono::milliseconds> given = ParseDuration(text, most);
    if (!given) {
      throw CLI::ValidationError(name, "write " + std::string(kDurationForm) + ", up to " +
                                           std::to_string(most / kDay) + "d; not \"" + text + '"');
    }
    store(*given);
  };
  command.add_option_function<std::string>(name, read, description)->type_name("TIME");
}

}  // namespace fieldline::tool
