#include "service/http/http_service.h"

#include <chrono>
#include <utility>

#include "service/http/web_files.h"
#include "service/http/web_server.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using httplib::Request;
using httplib::Response;

constexpr int kMostFollowers = 16;  // half of the connections: pages that are open never keep others out
constexpr auto kBetweenTries = 5s;  // to listen

// Of every answer. Nothing is loaded from elsewhere, and no other page may show this one in itself.
const httplib::Headers kHeaders = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Frame-Options",              "DENY"                       },
    {"X-Content-Type-Options",       "nosniff"                    },
    {"Referrer-Policy",              "no-referrer"                },
    {"Cross-Origin-Resource-Policy", "same-origin"                },
};

void Send(const Reply& reply, Response& response) {
  response.status = reply.status;
  response.set_header("Cache-Control", "no-store");
  response.set_content(reply.body, reply.type);
}

// A browser asks whether the file has changed each time, and hardly ever gets it again.
void SendFile(const WebFile& file, const Request& request, Response& response) {
  const std::string tag = '"' + std::to_string(std::hash<std::string_view>()(file.content)) + '"';
  response.set_header("ETag", tag);
  response.set_header("Cache-Control", "no-cache");
  if (request.get_header_value("If-None-Match") == tag) {
    response.status = 304;
    return;
  }
  response.set_content(file.content.data(), file.content.size(), std::string(file.type));
}

// A browser says from which page a request comes. That page's JSON would have to be asked for beforehand, too, which is
// refused; and the cookie does not come with it. A program says nothing of pages.
bool IsForeignPage(const Request& request) {
  const std::string site = request.get_header_value("Sec-Fetch-Site");
  if (!site.empty()) return site != "same-origin" && site != "none";
  const std::string origin = request.get_header_value("Origin");
  return !origin.empty() && !origin.ends_with("://" + request.get_header_value("Host"));
}

}  // namespace

HttpService::HttpService(const HttpSettings& settings, const std::string& unit, const Api& api, LiveState& live,
                         Notice notice)
    : settings_(settings),
      access_(settings, unit),
      api_(api),
      live_(live),
      notice_(std::move(notice)),
      server_(std::make_unique<WebServer>(
          [this](const Request& request, Response& response) { Answer(request, response); })) {
  server_->set_default_headers(kHeaders);
  const bool is_bound = Bind();
  if (!is_bound) {
    notice_("the page can't listen at " + settings_.host + ", port " + std::to_string(settings_.port) +
            "; it will try again");
  }
  thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

HttpService::~HttpService() {
  thread_.request_stop();
  live_.Close();
  // The server does not hear it before it listens.
  while (!has_ended_) {
    server_->Close();
    std::this_thread::sleep_for(10ms);
  }
  thread_.join();
}

bool HttpService::Bind() {
  if (settings_.port == 0) {
    port_ = std::max(0, server_->bind_to_any_port(settings_.host));
  } else {
    port_ = server_->bind_to_port(settings_.host, settings_.port) ? settings_.port : 0;
  }
  if (port_ == 0) return false;
  const bool is_ipv6 = settings_.host.find(':') != std::string::npos;
  notice_("the page is at http://" + (is_ipv6 ? '[' + settings_.host + ']' : settings_.host) + ':' +
          std::to_string(port_) + '/');
  return true;
}

void HttpService::Run(const std::stop_token& stop) {
  while (!stop.stop_requested() && port_ == 0) {
    live_.WaitForClose(kBetweenTries);
    if (!stop.stop_requested()) Bind();
  }
  if (port_ != 0) server_->listen_after_bind();
  has_ended_ = true;
}

void HttpService::Answer(const Request& request, Response& response) {
  const std::string host = request.get_header_value("Host");
  const std::string authorization = request.get_header_value("Authorization");
  const std::string cookie = request.get_header_value("Cookie");
  const auto verdict = access_.Check({.host = host, .authorization = authorization, .cookie = cookie});
  if (verdict == Access::Verdict::kAllowed) {
    AnswerAllowed(request, response);
    return;
  }
  if (verdict == Access::Verdict::kForeignHost) {
    Send(ErrorReply(403, "foreign_host", "without a token this is only reached by an address or as localhost"),
         response);
    return;
  }
  const WebFile* const file = FindWebFile(request.path);
  if (file != nullptr && file->is_public) {
    SendFile(*file, request, response);
  } else if (request.path == "/") {
    response.set_redirect("/login", 303);
  } else {
    response.set_header("WWW-Authenticate", "Bearer");
    Send(ErrorReply(401, "no_token", "a token is needed, as \"Authorization: Bearer TOKEN\" or a cookie"), response);
  }
}

void HttpService::AnswerPost(const Request& request, Response& response) {
  if (IsForeignPage(request)) {
    Send(ErrorReply(403, "foreign_page", "another page must not do this"), response);
  } else if (!request.get_header_value("Content-Type").starts_with("application/json")) {
    Send(ErrorReply(415, "no_json", "the header \"Content-Type: application/json\" is needed"), response);
  } else if (const auto reply = api_.Post(request.path, request.body)) {
    Send(*reply, response);
  } else {
    response.set_header("Allow", "GET, HEAD");
    Send(ErrorReply(405, "not_allowed", "nothing can be changed here"), response);
  }
}

void HttpService::AnswerAllowed(const Request& request, Response& response) {
  if (request.method == "POST") {
    AnswerPost(request, response);
    return;
  }
  if (const WebFile* const file = FindWebFile(request.path)) {
    SendFile(*file, request, response);
  } else if (request.path == "/session") {
    if (const std::string cookie = access_.Cookie(); !cookie.empty()) response.set_header("Set-Cookie", cookie);
    Send({.status = 204}, response);
  } else if (request.path == "/api/v1/follow") {
    Follow(response);
  } else if (const auto reply = api_.Get(request.path, request.params)) {
    Send(*reply, response);
  } else {
    Send(ErrorReply(404, "not_found", "there is no such page"), response);
  }
}

// Server-sent events, as long as the listener listens.
void HttpService::Follow(Response& response) {
  // Counts the listener while it holds this.
  const std::shared_ptr<std::atomic<int>> place(&followers_, [](std::atomic<int>* followers) { --*followers; });
  if (++followers_ > kMostFollowers) {
    Send(ErrorReply(503, "too_many", "too many pages are open"), response);
    return;
  }
  response.set_header("Cache-Control", "no-store");
  response.set_chunked_content_provider("text/event-stream", [place, follower = Api::Follower(api_), is_first = true](
                                                                 std::size_t, httplib::DataSink& sink) mutable {
    if (!is_first && !follower.Wait()) {
      sink.done();
      return true;
    }
    is_first = false;
    const std::string event = follower.Next();
    return sink.write(event.data(), event.size());
  });
}

}  // namespace fieldline::service
