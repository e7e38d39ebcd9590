#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "polling/site/http_settings.h"
#include "service/http/access.h"
#include "service/http/api.h"

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace fieldline::service {

class WebServer;

// Serves the page and its interface, on threads of its own.
class HttpService {
 public:
  // Is told, in a sentence, what a person should know.
  using Notice = std::function<void(const std::string&)>;

  // Begins at once; while its address can't be had it tries again. `api` and `live` must outlive this. Throws
  // UsageError when the token is not fit.
  HttpService(const HttpSettings& settings, const std::string& unit, const Api& api, LiveState& live, Notice notice);

  // Ends all connections.
  ~HttpService();
  HttpService(const HttpService&) = delete;
  HttpService& operator=(const HttpService&) = delete;

  // Where it listens; 0 while it does not.
  int port() const { return port_; }

 private:
  bool Bind();
  void Run(const std::stop_token& stop);
  void Answer(const httplib::Request& request, httplib::Response& response);
  void AnswerPost(const httplib::Request& request, httplib::Response& response);
  void AnswerAllowed(const httplib::Request& request, httplib::Response& response);
  void Follow(httplib::Response& response);

  const HttpSettings settings_;
  const Access access_;
  const Api& api_;
  LiveState& live_;
  const Notice notice_;
  std::atomic<int> port_ = 0;
  std::atomic<int> followers_ = 0;
  std::atomic<bool> has_ended_ = false;  // the thread
  std::unique_ptr<WebServer> server_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace fieldline::service
