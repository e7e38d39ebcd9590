#include "tools/options/duration_option.h"

#include <optional>
#include <utility>

#include "polling/site/duration.h"

namespace fieldline::tool {

void AddDuration(CLI::App& command, const std::string& name, const std::string& description,
                 std::function<void(std::chrono::milliseconds)> store) {
  const auto read = [store = std::move(store), name](const std::string& text) {
    const std::optional<std::chrono::milliseconds> given = ParseDuration(text);
    if (!given) throw CLI::ValidationError(name, "write " + std::string(kDurationForm) + "; not \"" + text + '"');
    store(*given);
  };
  command.add_option_function<std::string>(name, read, description)->type_name("TIME");
}

}  // namespace fieldline::tool
