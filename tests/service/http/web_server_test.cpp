#include "service/http/web_server.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include "service/http/request_head.h"

namespace fieldline::service {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr WebLimits kShort = {.head = milliseconds(50), .answer = milliseconds(50)};

// The client's end of a connection.
class Client {
 public:
  Client() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends_), 0); }
  ~Client() { close(ends_[0]); }

  void Say(std::string_view text) const {
    EXPECT_EQ(send(ends_[0], text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  }

  // What comes until the server closes the connection.
  std::string ServedBy(WebServer& server) const {
    server.ServeConnection(ends_[1]);
    std::string answer;
    char bytes[4096];
    for (ssize_t count = 0; (count = recv(ends_[0], bytes, sizeof bytes, 0)) > 0;) {
      answer.append(bytes, static_cast<std::size_t>(count));
    }
    return answer;
  }

 private:
  int ends_[2] = {-1, -1};
};

class SmallServer : public testing::Test {
 protected:
  std::string Answer(std::string_view request) {
    const Client client;
    client.Say(request);
    return client.ServedBy(server_);
  }

  std::vector<std::string> asked_;
  WebServer server_{[this](const httplib::Request& request, httplib::Response& response) {
                      asked_.push_back(request.path + request.body);
                      response.set_content("hello", "text/plain");
                    },
                    kShort};
};

TEST_F(SmallServer, AnswersOneRequestAfterAnother) {
  const std::string answer = Answer("GET /a HTTP/1.1\r\nHost: x\r\n\r\nHEAD /b?c=d HTTP/1.1\r\nHost: x\r\n\r\n");
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answer, HasSubstr("\r\n\r\nhelloHTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answer, Not(HasSubstr("hello\r\n")));
  EXPECT_THAT(asked_, testing::ElementsAre("/a", "/b"));
}

TEST_F(SmallServer, ReadsTheBodyOfAPostAlone) {
  // What follows a body is no request, whoever wrote it into one.
  for (const char* const header : {"Content-Length: 5", "content-length: 0", "Transfer-Encoding: chunked"}) {
    asked_.clear();
    const std::string answer =
        Answer("GET /a HTTP/1.1\r\n" + std::string(header) + "\r\n\r\nGET /b HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(answer, HasSubstr("Connection: close"));
    EXPECT_THAT(asked_, testing::ElementsAre("/a")) << header;
  }
  asked_.clear();
  Answer("POST /a HTTP/1.1\r\nContent-Length: 3\r\n\r\n{1}GET /b HTTP/1.1\r\nHost: x\r\n\r\n");
  EXPECT_THAT(asked_, testing::ElementsAre("/a{1}", "/b"));
  for (const char* const headers : {"Content-Length: 4097", "Content-Length: 3\r\nContent-Length: 30",
                                    "Content-Length: 3\r\nTransfer-Encoding: chunked", "Content-Length: 3x"}) {
    asked_.clear();
    Answer("POST /a HTTP/1.1\r\n" + std::string(headers) + "\r\n\r\n{1}GET /b HTTP/1.1\r\n\r\n");
    EXPECT_THAT(asked_, testing::ElementsAre("/a")) << headers;
  }
  asked_.clear();
  EXPECT_THAT(Answer("POST /a HTTP/1.1\r\nContent-Length: 3\r\n\r\n{1"), IsEmpty());
  EXPECT_THAT(Answer("PUT /a HTTP/1.1\r\nContent-Length: 1\r\n\r\nx"), StartsWith("HTTP/1.1 405 "));
  EXPECT_THAT(Answer("BREW /a HTTP/1.1\r\n\r\n"), StartsWith("HTTP/1.1 400 "));
  EXPECT_THAT(asked_, IsEmpty());
}

TEST_F(SmallServer, IgnoresRanges) {
  // Thousands of ranges of the whole would make thousands of copies of it.
  std::string ranges = "bytes=0-";
  while (ranges.size() < 4000) ranges += ",0-";
  const std::string answer = Answer("GET /a HTTP/1.1\r\nRange: " + ranges + "\r\n\r\n");
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answer, HasSubstr("\r\n\r\nhello"));
}

TEST_F(SmallServer, WaitsForNobody) {
  EXPECT_THAT(Answer(""), IsEmpty());
  EXPECT_THAT(Answer("GET / HTTP/1.1\r\nHost: x\r\n"), IsEmpty());
  EXPECT_THAT(Answer("GET / HTTP/1.1\r\nX: " + std::string(kMostHeadBytes, 'x')), StartsWith("HTTP/1.1 431 "));
  EXPECT_THAT(Answer("GET /" + std::string(kMostHeadBytes, 'x')), StartsWith("HTTP/1.1 431 "));
  EXPECT_THAT(asked_, IsEmpty());
}

TEST(WebServer, LeavesAClientThatDoesNotRead) {
  const std::string large(16 << 20, 'x');
  WebServer server([&](const auto&, httplib::Response& response) { response.set_content(large, "text/plain"); },
                   kShort);
  const Client client;
  client.Say("GET / HTTP/1.1\r\n\r\n");
  EXPECT_LT(client.ServedBy(server).size(), large.size());
}

TEST(RequestHead, KeepsWhatIsUsed) {
  std::string received = "GET / HTTP/1.1\r\nhost: a\r\nX-Evil: b\r\nEXPECT: 100-continue\r\nCookie: c\r\n\r\nnext";
  const auto head = TakeHead(received);
  ASSERT_TRUE(head);
  EXPECT_EQ(head->text, "GET / HTTP/1.1\r\nhost: a\r\nCookie: c\r\n\r\n");
  EXPECT_FALSE(head->has_body);
  EXPECT_EQ(received, "next");
  EXPECT_FALSE(TakeHead(received));
  EXPECT_EQ(received, "next");
}

}  // namespace
}  // namespace fieldline::service
