#include "service/change_log.h"

#include "polling/text.h"
#include "service/say.h"

namespace fieldline::service {

void ChangeLog::Add(std::size_t device, const PollResult& result) {
  const std::string code(result.failure ? result.failure->code : std::string_view());
  {
    const std::lock_guard lock(mutex_);
    if (states_[device].code == code) return;
    states_[device].code = code;
  }
  const std::string name = Escaped(devices_[device].device->name);
  Say(name + ": " + (result.failure ? result.failure->message + " (" + code + ')' : "good again"));
}

}  // namespace fieldline::service
