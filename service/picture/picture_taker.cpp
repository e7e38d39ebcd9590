#include "service/picture/picture_taker.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include "polling/snapshot.h"
#include "polling/usage_error.h"

namespace fieldline::service {
namespace {

Failure NotStored(const std::string& message) { return {ExitCode::kSomeFailed, "not_stored", message}; }

}  // namespace

std::optional<Failure> PictureTaker::MakeRoom() const {
  shelf_.RemoveOld(std::chrono::system_clock::now());
  std::error_code ignored;
  std::filesystem::remove_all(incoming_, ignored);  // left by a picture that failed, or by a program that was killed
  try {
    UseFlashRoot(incoming_);
  } catch (const UsageError& error) {
    return NotStored(error.what());
  }
  return std::nullopt;
}

PictureTaker::Taken PictureTaker::Take(const SiteLine& camera) {
  const SiteDevice& device = camera.devices[0];
  const std::lock_guard lock(mutex_);
  if (const auto failure = MakeRoom()) return {FailedToOpen(*failure), {}};
  PolledPort<CSerBase> polled(nullptr, camera.name, SER_COM);
  if (const auto failure = polled.Open(camera.port)) return {FailedToOpen(*failure), {}};
  const std::unique_ptr<CSensorBase> driver = RequireDriver(*device.kind);
  Taken taken{Poll(*device.kind, device.address, *driver, &polled, device.options), {}};
  PollResult& result = taken.result;
  try {
    const auto picture = FindSnapshot(*device.kind, incoming_, driver->m_pData, &result);
    if (picture) taken.path = shelf_.Keep(device.name, result.time, picture->path);
  } catch (const std::filesystem::filesystem_error& error) {
    result.failure = NotStored(error.what());
  }
  if (result.failure) result.record.clear();
  return taken;
}

}  // namespace fieldline::service
