#include "service/http/web_server.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <semaphore>
#include <string>
#include <utility>

#include "fieldline/platform/connection.h"
#include "service/http/request_head.h"

namespace fieldline::service {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int kMostConnections = 32;
constexpr int kMostRequests = 1000;   // of a connection
constexpr milliseconds kGlance(200);  // between two looks at whether to go on

constexpr std::string_view kTooLarge =
    "HTTP/1.1 431 Request Header Fields Too Large\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";

// A connection more waits at the system's door.
class LimitedPool final : public httplib::ThreadPool {
 public:
  LimitedPool() : ThreadPool(kMostConnections) {}

  void enqueue(std::function<void()> serve) override {
    places_.acquire();
    ThreadPool::enqueue([this, serve = std::move(serve)] {
      serve();
      places_.release();
    });
  }

 private:
  std::counting_semaphore<kMostConnections> places_{kMostConnections};
};

// What a request is read from, which is its head and nothing else, and its answer written to.
class RequestStream final : public httplib::Stream {
 public:
  RequestStream(Connection& connection, std::string_view head, milliseconds most)
      : connection_(connection), head_(head), most_(most) {}

  bool IsBroken() const { return is_broken_; }

  bool is_readable() const override { return !head_.empty(); }
  bool is_writable() const override { return !is_broken_ && !connection_.HasEnded(); }

  ssize_t read(char* buffer, std::size_t size) override {
    const std::size_t count = std::min(size, head_.size());
    std::memcpy(buffer, head_.data(), count);
    head_.remove_prefix(count);
    return static_cast<ssize_t>(count);
  }

  ssize_t write(const char* bytes, std::size_t size) override {
    if (is_broken_ || !connection_.Send({bytes, size}, most_)) {
      is_broken_ = true;
      return -1;
    }
    return static_cast<ssize_t>(size);
  }

  // Nobody asks; the addresses would only be known as long as the peer has not gone.
  void get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
  void get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}

  // The server compares it with a limit of select(), which is not used here.
  socket_t socket() const override { return 0; }

 private:
  Connection& connection_;
  std::string_view head_;
  const milliseconds most_;  // for a part of the answer
  bool is_broken_ = false;
};

// Reads up to the end of the next head. Nothing when the connection has to be closed.
std::optional<RequestHead> ReadHead(Connection& connection, std::string& received, milliseconds most,
                                    const std::atomic<bool>& is_closed) {
  const Clock::time_point end = Clock::now() + most;
  for (;;) {
    if (auto head = TakeHead(received)) return head;
    if (received.size() > kMostHeadBytes) {
      connection.Send(kTooLarge, kGlance);
      return std::nullopt;
    }
    if (is_closed || Clock::now() >= end) return std::nullopt;
    char bytes[2048];
    const std::ptrdiff_t count = connection.Receive(bytes, std::min(most, kGlance));
    if (count == Connection::kEnded) return std::nullopt;
    received.append(bytes, static_cast<std::size_t>(count));
  }
}

// Takes the body that follows a head. False when it does not come.
bool ReadBody(Connection& connection, std::string& received, std::size_t size, milliseconds most,
              const std::atomic<bool>& is_closed) {
  const Clock::time_point end = Clock::now() + most;
  while (received.size() < size) {
    if (is_closed || Clock::now() >= end) return false;
    char bytes[kMostBodyBytes];
    const std::ptrdiff_t count = connection.Receive(bytes, std::min(most, kGlance));
    if (count == Connection::kEnded) return false;
    received.append(bytes, static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

WebServer::WebServer(Handler handler, const WebLimits& limits) : limits_(limits) {
  new_task_queue = [] { return new LimitedPool; };
  set_keep_alive_timeout(std::chrono::floor<std::chrono::seconds>(limits.head).count());
  set_keep_alive_max_count(kMostRequests);
  set_socket_options([](socket_t socket) { PrepareListener(socket); });
  // Before the library's own routing, whose regular expressions have no limits.
  set_pre_routing_handler([handler = std::move(handler)](const httplib::Request& request, httplib::Response& response) {
    if (request.method == "GET" || request.method == "HEAD" || request.method == "POST") {
      handler(request, response);
    } else {
      response.status = 405;
      response.set_header("Allow", "GET, HEAD, POST");
    }
    return HandlerResponse::Handled;
  });
}

void WebServer::Close() {
  is_closed_ = true;
  stop();
}

bool WebServer::ServeConnection(socket_t socket) {
  Connection connection(socket);
  std::string received;
  for (int requests = 1; requests <= kMostRequests; ++requests) {
    const std::optional<RequestHead> head = ReadHead(connection, received, limits_.head, is_closed_);
    if (!head) return false;
    if (!ReadBody(connection, received, head->body_bytes, limits_.head, is_closed_)) return false;
    const auto set_body = [body = received.substr(0, head->body_bytes)](httplib::Request& request) {
      request.body = body;
    };
    received.erase(0, head->body_bytes);
    RequestStream stream(connection, head->text, limits_.answer);
    bool is_last = head->has_body || requests == kMostRequests;
    if (!process_request(stream, is_last, is_last, set_body) || is_last || stream.IsBroken()) break;
  }
  return true;
}

}  // namespace fieldline::service
