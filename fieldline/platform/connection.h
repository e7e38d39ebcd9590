#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace fieldline {

// A network connection that a server has accepted. No operation waits longer than it is told, whatever the peer does.
// Used by the service; not part of the library. One thread uses it at a time.
class Connection {
 public:
  // Owns the socket from now on. A peer that takes nothing and says nothing for 30 s is gone.
  explicit Connection(std::intptr_t socket);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  static constexpr std::ptrdiff_t kNothing = 0;
  static constexpr std::ptrdiff_t kEnded = -1;

  // How many bytes came, at least one; kNothing when none came within `most`, kEnded when none will.
  std::ptrdiff_t Receive(std::span<char> buffer, std::chrono::milliseconds most);

  // Whether all was sent within `most`.
  bool Send(std::string_view bytes, std::chrono::milliseconds most);

  // Whether the peer has closed or reset the connection.
  bool HasEnded() const;

 private:
  std::intptr_t socket_;
};

// For a socket that will listen: its address may be used at once after another program has left it, and never together
// with one.
void PrepareListener(std::intptr_t socket);

}  // namespace fieldline
