#include "fieldline/platform/connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace fieldline {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

void SetOption(int socket, int level, int option, int value) {
  // Without it all works, only less well.
  static_cast<void>(setsockopt(socket, level, option, &value, sizeof value));
}

// Whether the socket became ready before `end`.
bool WaitFor(int socket, short what, Clock::time_point end) {
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left <= milliseconds(0)) return false;
    pollfd waiting{socket, what, 0};
    const int ready = poll(&waiting, 1, static_cast<int>(left.count()));
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

}  // namespace

Connection::Connection(std::intptr_t socket) : socket_(socket) {
  const int handle = static_cast<int>(socket);
  SetOption(handle, IPPROTO_TCP, TCP_NODELAY, 1);
#ifdef TCP_USER_TIMEOUT
  constexpr int kSilence = 30'000;  // ms
  SetOption(handle, IPPROTO_TCP, TCP_USER_TIMEOUT, kSilence);
#endif
}

Connection::~Connection() {
  shutdown(static_cast<int>(socket_), SHUT_RDWR);
  close(static_cast<int>(socket_));
}

std::ptrdiff_t Connection::Receive(std::span<char> buffer, milliseconds most) {
  const int handle = static_cast<int>(socket_);
  const Clock::time_point end = Clock::now() + most;
  for (;;) {
    if (!WaitFor(handle, POLLIN, end)) return kNothing;
    const ssize_t count = recv(handle, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count > 0) return count;
    if (count == 0 || (errno != EINTR && errno != EAGAIN)) return kEnded;
  }
}

bool Connection::Send(std::string_view bytes, milliseconds most) {
  const int handle = static_cast<int>(socket_);
  const Clock::time_point end = Clock::now() + most;
  while (!bytes.empty()) {
    if (!WaitFor(handle, POLLOUT, end)) return false;
    const ssize_t count = send(handle, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    if (count < 0 && errno != EINTR && errno != EAGAIN) return false;
  }
  return true;
}

bool Connection::HasEnded() const {
  char byte = 0;
  const ssize_t count = recv(static_cast<int>(socket_), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
  return count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN);
}

void PrepareListener(std::intptr_t socket) { SetOption(static_cast<int>(socket), SOL_SOCKET, SO_REUSEADDR, 1); }

}  // namespace fieldline
