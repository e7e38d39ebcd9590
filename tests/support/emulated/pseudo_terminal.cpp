// Test programs for Windows link this in place of the platform's own pseudo-terminals, of which Windows has none.
// lines.py has real ones, on the side of the machine that Wine runs on; FIELDLINE_LINES is its port.

#include "fieldline/platform/pseudo_terminal.h"

#include <winsock2.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace fieldline {

namespace {

SOCKET AsSocket(std::intptr_t handle) { return static_cast<SOCKET>(handle); }

bool Send(std::intptr_t handle, const std::string& bytes) {
  return send(AsSocket(handle), bytes.data(), static_cast<int>(bytes.size()), 0) == static_cast<int>(bytes.size());
}

bool Receive(std::intptr_t handle, void* data, int count) {
  return count == 0 || recv(AsSocket(handle), static_cast<char*>(data), count, MSG_WAITALL) == count;
}

std::string Number(std::uint32_t number) { return {reinterpret_cast<const char*>(&number), sizeof number}; }

// The answer to a request; -1 when nobody answers.
std::int32_t Ask(std::intptr_t handle, const std::string& request) {
  std::int32_t answer = -1;
  return Send(handle, request) && Receive(handle, &answer, sizeof answer) ? answer : -1;
}

}  // namespace

bool PseudoTerminal::IsSupported() { return true; }

bool PseudoTerminal::Open() {
  Close();
  static WSADATA data;
  static const int started = WSAStartup(MAKEWORD(2, 2), &data);
  const char* const port = std::getenv("FIELDLINE_LINES");
  if (started != 0 || port == nullptr) return false;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<u_short>(std::atoi(port)));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const SOCKET line = socket(AF_INET, SOCK_STREAM, 0);
  far_ = static_cast<std::intptr_t>(line);
  if (!IsOpen()) return false;
  const int on = 1;
  setsockopt(line, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  std::string path = R"(\\?\unix)";
  char character = 0;
  if (connect(line, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return Close(), false;
  while (Receive(far_, &character, 1) && character != '\n') path += character == '/' ? '\\' : character;
  if (character != '\n' || path.size() >= sizeof path_) return Close(), false;
  std::strcpy(path_, path.c_str());
  return true;
}

void PseudoTerminal::Close() {
  path_[0] = '\0';
  if (!IsOpen()) return;
  // The other side closes its end when it has hung up.
  char nothing = 0;
  shutdown(AsSocket(far_), SD_SEND);
  while (recv(AsSocket(far_), &nothing, 1, 0) > 0) {
  }
  closesocket(AsSocket(far_));
  far_ = kInvalidHandle;
}

int PseudoTerminal::Read(BYTE* data, int capacity, int wait_ms) {
  if (!IsOpen()) return -1;
  if (capacity < 1) return 0;
  const auto wait = static_cast<std::uint32_t>(std::max(wait_ms, 0));
  const std::int32_t count = Ask(far_, "R" + Number(static_cast<std::uint32_t>(capacity)) + Number(wait));
  return count > 0 && !Receive(far_, data, count) ? -1 : count;
}

int PseudoTerminal::Write(const BYTE* data, int count) {
  if (!IsOpen()) return -1;
  if (count < 1) return 0;
  const auto size = static_cast<std::uint32_t>(count);
  return Ask(far_, "W" + Number(size) + std::string(reinterpret_cast<const char*>(data), size));
}

std::uint32_t PseudoTerminal::Baud() const {
  return IsOpen() ? static_cast<std::uint32_t>(std::max(Ask(far_, "B"), 0)) : 0;
}

}  // namespace fieldline
