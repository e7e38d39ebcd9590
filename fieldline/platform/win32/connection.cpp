#include "fieldline/platform/connection.h"

#include <winsock2.h>

#include <algorithm>
#include <climits>

#include "fieldline/platform/win32/deadline.h"
#include "fieldline/platform/win32/system.h"

namespace fieldline {

namespace {

using std::chrono::milliseconds;

SOCKET AsSocket(std::intptr_t socket) { return static_cast<SOCKET>(socket); }

void SetOption(SOCKET socket, int level, int option, DWORD value) {
  // Without it all works, only less well.
  static_cast<void>(setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value));
}

int Length(std::size_t size) { return static_cast<int>(std::min<std::size_t>(size, INT_MAX)); }

bool HasFailed() { return WSAGetLastError() != WSAEWOULDBLOCK; }

// Whether the socket became ready before the deadline.
bool WaitFor(SOCKET socket, short what, const Deadline& deadline) {
  constexpr std::uint32_t kDay = 24 * 3600 * 1000;
  while (!deadline.HasPassed()) {
    WSAPOLLFD waiting{socket, what, 0};
    const int ready = WSAPoll(&waiting, 1, static_cast<int>(deadline.RemainingMs(kDay)));
    if (ready != 0) return ready > 0;
  }
  return false;
}

}  // namespace

Connection::Connection(std::intptr_t socket) : socket_(socket) {
  u_long non_blocking = 1;
  ioctlsocket(AsSocket(socket), FIONBIO, &non_blocking);
  SetOption(AsSocket(socket), IPPROTO_TCP, TCP_NODELAY, 1);
  constexpr int kTcpMaxRt = 5;  // TCP_MAXRT, which not every set of headers has: seconds
  SetOption(AsSocket(socket), IPPROTO_TCP, kTcpMaxRt, 30);
}

Connection::~Connection() {
  shutdown(AsSocket(socket_), SD_BOTH);
  closesocket(AsSocket(socket_));
}

std::ptrdiff_t Connection::Receive(std::span<char> buffer, milliseconds most) {
  const Deadline deadline(most.count());
  for (;;) {
    if (!WaitFor(AsSocket(socket_), POLLRDNORM, deadline)) return kNothing;
    const int count = recv(AsSocket(socket_), buffer.data(), Length(buffer.size()), 0);
    if (count > 0) return count;
    if (count == 0 || HasFailed()) return kEnded;
  }
}

bool Connection::Send(std::string_view bytes, milliseconds most) {
  const Deadline deadline(most.count());
  while (!bytes.empty()) {
    if (!WaitFor(AsSocket(socket_), POLLWRNORM, deadline)) return false;
    const int count = send(AsSocket(socket_), bytes.data(), Length(bytes.size()), 0);
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    if (count < 0 && HasFailed()) return false;
  }
  return true;
}

bool Connection::HasEnded() const {
  char byte = 0;
  const int count = recv(AsSocket(socket_), &byte, 1, MSG_PEEK);
  return count == 0 || (count < 0 && HasFailed());
}

// On Windows SO_REUSEADDR would let two programs have one address; what it does elsewhere is the rule here.
void PrepareListener(std::intptr_t socket) { SetOption(AsSocket(socket), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1); }

}  // namespace fieldline
