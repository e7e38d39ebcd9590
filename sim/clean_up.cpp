#include "sim/clean_up.h"

#include <list>
#include <mutex>
#include <utility>

namespace fieldline::sim {
namespace {

struct Registry {
  std::mutex mutex;
  std::list<CleanUp*> living;  // newest first
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

CleanUp::CleanUp(std::function<void()> remove) : remove_(std::move(remove)) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  registry.living.push_front(this);
}

CleanUp::~CleanUp() {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  registry.living.remove(this);
  if (remove_) remove_();
}

void CleanUpNow() {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  for (CleanUp* const clean_up : registry.living) {
    if (const auto remove = std::exchange(clean_up->remove_, nullptr)) remove();
  }
}

}  // namespace fieldline::sim
