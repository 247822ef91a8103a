#include "mcp/HTTPRequestParser.h"

#include "mcp/HTTPResponse.h"
#include "mcp/HTTPRouting.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace ondrel::mcp {

namespace {

using namespace std::string_literals;
using Pairs = std::vector<std::pair<std::string, std::string>>;

// "POST /mcp host=... body=...", or "none".
std::string told(const std::string& bytes) {
  const auto request = parseHTTPRequest(bytes);
  if (!request)
    return "none";
  return fmt::format("{} {}{} body={}", request->method, request->path,
                     request->host ? " host=" + *request->host : "", request->body);
}

TEST(HTTPRequestParserTest, ReadsTheFirstLineTheHostAndTheRest) {
  const Pairs cases{
      {"post /mcp\r\n\r\n", "POST /mcp body="}, // no version, lower case, no Host
      {"  POST   /MCP?a=b   HTTP/1.1 and more\r\n\r\n", "POST /MCP?a=b body="},
      {"POST /mcp HTTP/1.1\r\nContent-Length: 1\r\n\r\nmore than one", "POST /mcp body=more than one"},
      {"A b\r\nhOsT:\t one \t\r\nHost: two\r\n\r\n", "A b host=one body="},
      {"A b\r\nHost: \t \r\n\r\n", "A b host= body="},
      {"A b\r\n Host: folded\r\nX-Host: other\r\nHost : spaced\r\n\r\n", "A b body="},
      {"A b\nHost: x\r\n\r\n", "A b\nHost: body="}, // a bare LF ends no line
      {"A b\r\n\r\n\0\xFF"s, "A b body=\0\xFF"s},   // bodies are bytes
      {"POST /mcp HTTP/1.1\r\n", "none"},
      {"POST \r\n\r\n{}", "none"},
      {"\r\nPOST /mcp\r\n\r\n", "none"},
      {"A b\r\nX: \xED\xA0\x80\r\n\r\n", "none"}, // no UTF-8
  };
  for (const auto& [bytes, expected] : cases)
    EXPECT_EQ(told(bytes), expected) << bytes;
}

TEST(HTTPRequestParserTest, KnowsWhenARequestIsComplete) {
  // How many bytes of the body complete a head; -1: none do.
  const std::pair<std::string, int> cases[] = {
      {"POST /mcp HTTP/1.1\r\nContent-Length: 5\r\n\r\n", 5},
      {"POST /mcp HTTP/1.1\r\ncontent-LENGTH:\t 3 \t\r\n\r\n", 3},
      {"A\r\n\r\n", 0},
      {"A\r\nContent-Length: 2\r\nContent-Length: 4\r\n\r\n", 2},
      {"A\r\nContent-Length: +4\r\n\r\n", 4},
      {"A\r\nContent-Length: -9223372036854775808\r\n\r\n", 0},
      {"A\r\nContent-Length: 9223372036854775808\r\n\r\n", 0}, // more than can be held
      {"A\r\nContent-Length: 4,4\r\n\r\n", 0},
      {"A\r\nContent-Length : 4\r\n\r\n", 0},
      {"A\r\nX: \xC3\r\nContent-Length: 0\r\n\r\n", -1}, // no UTF-8
      {"A\r\n\rx\r\n\n", -1},
  };
  for (const auto& [head, expected] : cases) {
    // Byte by byte, so that each break between two pieces is tried.
    const auto bytes = head + "123456";
    HTTPRequestProgress progress;
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
      const bool complete = expected >= 0 && length >= head.size() + static_cast<std::size_t>(expected);
      EXPECT_EQ(progress.isComplete(bytes.substr(0, length)), complete) << head << " at " << length;
      EXPECT_EQ(HTTPRequestProgress().isComplete(bytes.substr(0, length)), complete)
          << head << " at " << length;
    }
  }
}

TEST(HTTPRoutingTest, LetsPostsToTheOneRouteThrough) {
  const Pairs cases{
      {"POST /mcp\r\nHost: localhost\r\n", "{}"},
      {"POST /mcp\r\nHost: localhost:7000\r\n", "{}"},
      {"POST /mcp\r\nHost: 127.0.0.1:7000\r\n", "{}"},
      {"POST /mcp\r\nHost:\r\n", "403 Forbidden"},
      {"POST /mcp\r\nHost: LOCALHOST\r\n", "403 Forbidden"},
      {"POST /mcp\r\nHost: localhost.example\r\n", "403 Forbidden"},
      {"POST /mcp\r\nHost: 127.0.0.1.example:80\r\n", "403 Forbidden"},
      {"POST /mcp\r\nHost: [::1]:7000\r\n", "403 Forbidden"},
      {"POST /mcp\r\nHost: evil\r\nHost: localhost\r\n", "403 Forbidden"},
      {"OPTIONS /mcp\r\nHost: evil\r\n", "403 Forbidden"},
      {"options *\r\nHost: localhost\r\n", "204 "},
      {"POST /mcp\r\nOrigin: http://localhost:3000\r\n", "{}"},
      {"POST /mcp\r\norigin: https://[::1]:3000\r\n", "{}"},
      {"POST /mcp\r\nOrigin: null\r\n", "403 Forbidden"},
      {"POST /mcp\r\nOrigin:\r\n", "403 Forbidden"},
      {"POST /mcp\r\nOrigin: https://localhost.example\r\n", "403 Forbidden"},
      {"OPTIONS /mcp\r\nOrigin: https://evil\r\n", "204 "},
      {"GET /mcp\r\n", "404 Not Found"},
      {"POST /mcp?x\r\n", "404 Not Found"},
      {"POST http://localhost/mcp\r\n", "404 Not Found"},
      {"POST\r\n", "400 Bad Request"},
  };
  const auto routed = [](const std::string& bytes) {
    const auto body = rpcBody(parseHTTPRequest(bytes));
    return body ? *body : fmt::format("{} {}", body.error().status, body.error().body);
  };
  for (const auto& [head, expected] : cases)
    EXPECT_EQ(routed(head + "\r\n{}"), expected) << head;
  EXPECT_EQ(routed("POST /mcp\r\n\r\n"), "400 Missing body");
}

} // namespace

} // namespace ondrel::mcp
