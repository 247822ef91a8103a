#include "mcp/HTTPRequestParser.h"

#include "mcp/HTTPResponse.h"
#include "mcp/HTTPRouting.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

namespace ondrel::mcp {

namespace {

using namespace std::string_literals;

// "POST /mcp host=... body=...", or "none".
std::string told(const std::string& bytes) {
  const auto request = parseHTTPRequest(bytes);
  if (!request)
    return "none";
  return fmt::format("{} {}{} body={}", request->method, request->path,
                     request->host ? " host=" + *request->host : "", request->body);
}

TEST(HTTPRequestParserTest, ReadsTheFirstLineTheHostAndTheRest) {
  const struct {
    std::string bytes;
    std::string expected;
  } cases[] = {
      {"POST /mcp HTTP/1.1\r\nHost: localhost:7000\r\n\r\n{}", "POST /mcp host=localhost:7000 body={}"},
      {"post /mcp\r\n\r\n", "POST /mcp body="}, // no version, lower case, no Host
      {"  POST   /MCP?a=b   HTTP/1.1 and more\r\n\r\n", "POST /MCP?a=b body="},
      {"POST /mcp HTTP/1.1\r\nContent-Length: 1\r\n\r\nmore than one", "POST /mcp body=more than one"},
      {"POST /mcp HTTP/1.1\r\nContent-Length: 99\r\n\r\nless", "POST /mcp body=less"},
      {"A b\r\n\r\nx\r\n\r\ny", "A b body=x\r\n\r\ny"},
      {"A b\r\nhOsT:\t one \t\r\nHost: two\r\n\r\n", "A b host=one body="},
      {"A b\r\nHost:\r\n\r\n", "A b host= body="},
      {"A b\r\nHost: \t \r\n\r\n", "A b host= body="},
      {"A b\r\n Host: folded\r\nX-Host: other\r\nHost : spaced\r\n\r\n", "A b body="},
      {"HOST: x\r\n\r\n", "HOST: x host=x body="},  // the first line is one like the others
      {"A b\nHost: x\r\n\r\n", "A b\nHost: body="}, // a bare LF ends no line
      {"A b\r\n\r\n\0\xFF"s, "A b body=\0\xFF"s},   // bodies are bytes
      {"A\tb c\r\n\r\n", "A\tB c body="},
      {"", "none"},
      {"POST /mcp HTTP/1.1\r\n", "none"},
      {"POST /mcp HTTP/1.1\n\n{}", "none"},
      {"POST\r\n\r\n{}", "none"},
      {"POST \r\n\r\n{}", "none"},
      {"\r\n\r\nPOST /mcp\r\n\r\n", "none"},
      {"\r\nPOST /mcp\r\n\r\n", "none"},
      {"A b\r\nX: \xC3\r\n\r\n", "none"}, // no UTF-8
      {"A b\r\nX: \xED\xA0\x80\r\n\r\n", "none"},
  };
  for (const auto& [bytes, expected] : cases)
    EXPECT_EQ(told(bytes), expected) << bytes;
}

TEST(HTTPRequestParserTest, KnowsWhenARequestIsComplete) {
  const struct {
    std::string head;
    std::string body;
    // How many bytes of the body complete it; -1: none do.
    int expected;
  } cases[] = {
      {"POST /mcp HTTP/1.1\r\nContent-Length: 5\r\n\r\n", "123456", 5},
      {"POST /mcp HTTP/1.1\r\ncontent-LENGTH:\t 3 \t\r\n\r\n", "123456", 3},
      {"A\r\n\r\n", "123", 0},
      {"A\r\nContent-Length: 2\r\nContent-Length: 4\r\n\r\n", "123456", 2},
      {"A\r\nContent-Length: +4\r\n\r\n", "123456", 4},
      {"A\r\nContent-Length: 004\r\n\r\n", "123456", 4},
      {"A\r\nContent-Length: -4\r\n\r\n", "123456", 0},
      {"A\r\nContent-Length: -9223372036854775808\r\n\r\n", "123456", 0},
      {"A\r\nContent-Length: 9223372036854775807\r\n\r\n", "123456", -1},
      {"A\r\nContent-Length: 9223372036854775808\r\n\r\n", "123456", 0}, // more than can be held
      {"A\r\nContent-Length: \r\n\r\n", "123456", 0},
      {"A\r\nContent-Length: 4 4\r\n\r\n", "123456", 0},
      {"A\r\nContent-Length: 4,4\r\n\r\n", "123456", 0},
      {"A\r\nContent-Length: 0x4\r\n\r\n", "123456", 0},
      {"A\r\nContent-Length: +-4\r\n\r\n", "123456", 0},
      {"A\r\nContent-Length : 4\r\n\r\n", "123456", 0},
      {"A\r\nTransfer-Encoding: chunked\r\n\r\n", "4\r\n", 0},
      {"Content-Length: 4\r\n\r\n", "123456", 4},
      {"A\r\nX: \xC3\r\nContent-Length: 0\r\n\r\n", "123456", -1}, // no UTF-8
      {"A\r\n\r", "x\r\n\n", -1},
      {"A\n\n", "123456", -1},
  };
  for (const auto& [head, body, expected] : cases) {
    // Byte by byte, so that each break between two pieces is tried.
    const auto bytes = head + body;
    HTTPRequestProgress progress;
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
      const bool complete = expected >= 0 && length >= head.size() + static_cast<std::size_t>(expected);
      EXPECT_EQ(progress.isComplete(bytes.substr(0, length)), complete) << head << " at " << length;
      EXPECT_EQ(isRequestComplete(bytes.substr(0, length)), complete) << head << " at " << length;
    }
  }
}

// "body: ...", or "403 Forbidden".
std::string routed(const std::string& bytes) {
  const auto body = rpcBody(parseHTTPRequest(bytes));
  if (body)
    return "body: " + *body;
  EXPECT_EQ(body.error().contentType, "text/plain");
  return fmt::format("{} {}", body.error().status, body.error().body);
}

TEST(HTTPRoutingTest, LetsPostsToTheOneRouteThrough) {
  const struct {
    std::string firstLine;
    std::string host;
    std::string expected;
  } cases[] = {
      {"POST /mcp HTTP/1.1", "", "body: {}"},
      {"pOSt /mcp", "Host: localhost", "body: {}"},
      {"POST /mcp", "Host: localhost:7000", "body: {}"},
      {"POST /mcp", "Host: 127.0.0.1", "body: {}"},
      {"POST /mcp", "Host: 127.0.0.1:7000", "body: {}"},
      {"POST /mcp", "Host: ::localhost", "body: {}"},
      {"POST /mcp", "Host:", "403 Forbidden"},
      {"POST /mcp", "Host: :", "403 Forbidden"},
      {"POST /mcp", "Host: LOCALHOST", "403 Forbidden"},
      {"POST /mcp", "Host: localhost.example", "403 Forbidden"},
      {"POST /mcp", "Host: user@localhost", "403 Forbidden"},
      {"POST /mcp", "Host: 127.0.0.1.example:80", "403 Forbidden"},
      {"POST /mcp", "Host: [::1]:7000", "403 Forbidden"},
      {"POST /mcp", "Host: evil\r\nHost: localhost", "403 Forbidden"},
      {"GET /other", "Host: evil", "403 Forbidden"},
      {"OPTIONS /mcp", "Host: evil", "403 Forbidden"},
      {"OPTIONS /mcp", "", "204 "},
      {"options *", "Host: localhost", "204 "},
      {"GET /mcp", "", "404 Not Found"},
      {"PUT /mcp", "", "404 Not Found"},
      {"POST /mcp/", "", "404 Not Found"},
      {"POST /mcp?x", "", "404 Not Found"},
      {"POST /MCP", "", "404 Not Found"},
      {"POST http://localhost/mcp", "", "404 Not Found"},
      {"POST", "", "400 Bad Request"},
  };
  for (const auto& [firstLine, host, expected] : cases)
    EXPECT_EQ(routed(firstLine + "\r\n" + (host.empty() ? "" : host + "\r\n") + "\r\n{}"), expected)
        << firstLine << ", " << host;
  EXPECT_EQ(routed("POST /mcp\r\n\r\n"), "400 Missing body");
  EXPECT_EQ(routed("GET /mcp\r\n\r\n"), "404 Not Found");
  EXPECT_EQ(routed("no blank line"), "400 Bad Request");
}

TEST(HTTPResponseTest, IsWrittenInFull) {
  EXPECT_EQ(
      (HTTPResponse{.status = 200, .body = "{\"\xC3\xA4\":1}", .contentType = "application/json"}).bytes(),
      "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 8\r\nConnection: "
      "close\r\n\r\n{\"\xC3\xA4\":1}");
  const std::pair<int, std::string> reasons[] = {{202, "Accepted"},    {204, "No Content"},
                                                 {400, "Bad Request"}, {403, "Forbidden"},
                                                 {404, "Not Found"},   {500, "Error"}};
  for (const auto& [status, reason] : reasons)
    EXPECT_EQ(HTTPResponse{.status = status}.bytes(),
              fmt::format("HTTP/1.1 {} {}\r\nContent-Type: text/plain\r\nContent-Length: 0\r\n"
                          "Connection: close\r\n\r\n",
                          status, reason));
}

} // namespace

} // namespace ondrel::mcp
