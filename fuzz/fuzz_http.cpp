// What a connection brings to the web server: it always ends, nothing is answered without the token, and nothing but
// GET, HEAD and POST gets through.

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include "fuzz/reply_port.h"
#include "service/http/access.h"
#include "service/http/request_head.h"
#include "service/http/web_server.h"

using namespace fieldline;
using fuzz::Require;

namespace {

constexpr std::string_view kToken = "0123456789abcdef";

const service::Access& TheAccess() {
  static const service::Access access = [] {
    char path[] = "/tmp/fieldline-token-XXXXXX";
    const int handle = mkstemp(path);
    Require(handle >= 0);
    std::ofstream(path) << kToken;
    close(handle);
    const service::Access made({.token_file = path}, "room-7");
    unlink(path);
    return made;
  }();
  return access;
}

// The connection's input as a whole.
std::string_view input;

void Answer(const httplib::Request& request, httplib::Response& response) {
  const bool is_post = request.method == "POST";
  Require(is_post || request.method == "GET" || request.method == "HEAD");
  Require(request.body.size() <= (is_post ? service::kMostBodyBytes : 0));
  Require(request.ranges.empty() && request.files.empty());
  const std::string host = request.get_header_value("Host");
  const std::string authorization = request.get_header_value("Authorization");
  const std::string cookie = request.get_header_value("Cookie");
  const auto verdict = TheAccess().Check({.host = host, .authorization = authorization, .cookie = cookie});
  const bool is_allowed = verdict == service::Access::Verdict::kAllowed;
  Require(!is_allowed || input.find(kToken) != std::string_view::npos);
  response.status = is_allowed ? 200 : 401;
  response.set_content(request.path, "text/plain");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMost = 16384;  // a pair of sockets holds more
  static service::WebServer server(Answer, {std::chrono::milliseconds(50), std::chrono::milliseconds(50)});
  input = {reinterpret_cast<const char*>(data), std::min(size, kMost)};
  int ends[2];
  Require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
  Require(send(ends[0], input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()));
  shutdown(ends[0], SHUT_WR);
  server.ServeConnection(ends[1]);
  char answer[16];
  const ssize_t count = recv(ends[0], answer, sizeof answer, MSG_DONTWAIT);
  Require(count <= 0 || std::string_view(answer, static_cast<std::size_t>(count)).starts_with("HTTP/1.1 "));
  close(ends[0]);
  return 0;
}
