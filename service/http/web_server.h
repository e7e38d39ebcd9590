#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>

namespace fieldline::service {

// How long a client may take.
struct WebLimits {
  std::chrono::milliseconds head{10'000};    // for a whole head, and for the silence before it
  std::chrono::milliseconds answer{30'000};  // for a part of an answer: 100 kB at 4 kB/s
};

// An HTTP server that nobody can keep busy: the number of connections is limited, so are the time and the size of a
// request's head, the time that a client takes to read an answer, and the requests of a connection. Only GET, HEAD and
// POST get to the handler, and only a POST with its body, which is small.
class WebServer final : public httplib::Server {
 public:
  using Handler = std::function<void(const httplib::Request&, httplib::Response&)>;

  // `handler` answers all requests; it may throw.
  explicit WebServer(Handler handler, const WebLimits& limits = {});

  // From now on nothing is waited for.
  void Close();

  // Serves a connection to its end, and closes it.
  bool ServeConnection(socket_t socket);

 private:
  bool process_and_close_socket(socket_t socket) override { return ServeConnection(socket); }

  const WebLimits limits_;
  std::atomic<bool> is_closed_ = false;
};

}  // namespace fieldline::service
