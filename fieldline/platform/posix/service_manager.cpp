#include "fieldline/platform/service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace fieldline {

// The protocol of systemd's sd_notify(): a datagram to the socket that is named in the environment.
void NotifyServiceManager(const std::string& state) {
  const char* const name = std::getenv("NOTIFY_SOCKET");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::size_t length = name != nullptr ? std::strlen(name) : 0;
  if (length == 0 || length >= sizeof address.sun_path) return;
  std::memcpy(address.sun_path, name, length);
  if (name[0] == '@') address.sun_path[0] = '\0';  // Linux's names without a file
  const int handle = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (handle < 0) return;
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
  // Nobody can be told that this failed.
  static_cast<void>(
      sendto(handle, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address), size));
  close(handle);
}

std::chrono::milliseconds ServiceWatchdogTime() {
  const char* const process = std::getenv("WATCHDOG_PID");
  if (process != nullptr && std::strtol(process, nullptr, 10) != getpid()) return {};
  const char* const time = std::getenv("WATCHDOG_USEC");
  const long long microseconds = time != nullptr ? std::strtoll(time, nullptr, 10) : 0;
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(microseconds));
}

}  // namespace fieldline
