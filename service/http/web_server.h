#pragma once

#include <httplib.h>

#include <atomic>
#include <cstddef>

namespace fieldline::service {

// An HTTP server that nobody can keep busy: the number of connections is limited, so are the time and the size of a
// request's head, the time that a client takes to read an answer, and the requests of a connection. Bodies are not
// read. Only GET and HEAD get to the handler.
class WebServer final : public httplib::Server {
 public:
  using Handler = std::function<void(const httplib::Request&, httplib::Response&)>;

  // `handler` answers all requests; it may throw.
  explicit WebServer(Handler handler);

  // From now on nothing is waited for.
  void Close();

  // Serves a connection to its end, and closes it.
  bool ServeConnection(socket_t socket);

 private:
  bool process_and_close_socket(socket_t socket) override { return ServeConnection(socket); }

  std::atomic<bool> is_closed_ = false;
};

}  // namespace fieldline::service
