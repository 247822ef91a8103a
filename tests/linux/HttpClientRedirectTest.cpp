// Where a request goes when the server sends it elsewhere, and what of it goes along.
#include "HttpClientFixture.h"

#include "platform/linux/network/SoupHttpClientRules.h"

namespace ondrel::platform {

namespace {

// Follows one redirect by the rules alone.
std::string followed(HttpRequest request, int status, const std::string& location) {
  auto next = network::redirected(std::move(request), status, location);
  if (!next)
    return std::to_string(next.error().code);
  auto text = next->method + " " + next->url;
  for (const auto& [name, value] : next->headers)
    text += " " + name;
  return next->body.empty() ? text : text + " [" + next->body + "]";
}

TEST(HttpClientRedirectRulesTest, TakeOutWhatMayNotGoAlong) {
  const HttpHeaders all{
      {"Authorization", "Bearer t"}, {"cookie", "a=b"}, {"Content-Type", "text/plain"}, {"Accept", "*/*"}};
  const std::string from = "https://api.example/jmap/session?x";
  const auto bad = std::to_string(WebError::badServerResponse);
  const auto plain = std::to_string(WebError::secureConnectionFailed);
  struct Case {
    const char* method;
    const char* body;
    int status;
    const char* location;
    std::string expected;
  };
  const std::string kept = " Authorization cookie Content-Type Accept";
  for (const auto& [method, body, status, location, expected] : std::initializer_list<Case>{
           {"GET", "", 302, "/other", "GET https://api.example/other" + kept},
           {"GET", "", 302, "HTTPS://API.example:443/other", "GET https://API.example/other" + kept},
           {"GET", "", 302, "https://api.example:444/", "GET https://api.example:444/ Content-Type Accept"},
           {"GET", "", 308, "//evil.example/", "GET https://evil.example/ Content-Type Accept"},
           {"GET", "", 301, "https://api.example.evil.example/",
            "GET https://api.example.evil.example/ Content-Type Accept"},
           {"GET", "", 302, "http://api.example/", plain},
           {"GET", "", 302, "http://localhost:8000/", "GET http://localhost:8000/ Content-Type Accept"},
           {"GET", "", 302, "file:///etc/passwd", bad},
           {"GET", "", 302, "https://user@evil.example/", bad},
           {"GET", "", 302, "/a\tb c", "GET https://api.example/a%09b%20c" + kept},
           {"POST", "b", 301, "/", "GET https://api.example/ Authorization cookie Accept"},
           {"POST", "b", 303, "https://evil.example/", "GET https://evil.example/ Accept"},
           {"PUT", "b", 303, "/", "GET https://api.example/ Authorization cookie Accept"},
           {"PUT", "b", 302, "/", "PUT https://api.example/" + kept + " [b]"},
           {"HEAD", "", 303, "/", "HEAD https://api.example/" + kept},
           {"POST", "b", 307, "/", "POST https://api.example/" + kept + " [b]"},
           {"POST", "b", 307, "https://evil.example/", bad},
           {"POST", "", 307, "https://evil.example/", "POST https://evil.example/ Content-Type Accept"},
       })
    EXPECT_EQ(followed({.method = method, .url = from, .headers = all, .body = body}, status, location),
              expected)
        << method << " " << status << " " << location;
  EXPECT_EQ(followed({.url = from, .staysAtOrigin = true}, 302, "/x"), "GET https://api.example/x");
  EXPECT_EQ(followed({.url = from, .staysAtOrigin = true}, 302, "https://evil.example/"), bad);
}

TEST_F(HttpClientTest, FollowsRedirectsForRequestsAndStreams) {
  HttpClientServer other(
      HttpClientServer::answering([](const std::string&) { return response("200 OK", "there"); }));
  HttpClientServer server(HttpClientServer::answering([&](const std::string& request) {
    return request.contains(" /start ")
               ? response("307 Elsewhere", "a body that nobody reads", "Location: /next\r\n")
               : response("302 Elsewhere", "", "Location: " + other.url("/end") + "\r\n");
  }));
  const HttpRequest request{.url = server.url("/start"),
                            .headers = {{"Authorization", "Bearer t"}, {"Cookie", "a=b"}}};
  EXPECT_EQ(told(send(request)), "200 there");
  const auto stream = run(client->open(request));
  ASSERT_TRUE(stream);
  EXPECT_EQ((*stream)->status(), 200);
  EXPECT_EQ(run((*stream)->read()), "there");

  for (const auto& seen : server.requests())
    EXPECT_TRUE(seen.contains("Authorization: Bearer t") && seen.contains("Cookie: a=b")) << seen;
  ASSERT_EQ(other.requests().size(), 2U);
  for (const auto& seen : other.requests())
    EXPECT_FALSE(seen.contains("Authorization") || seen.contains("Cookie")) << seen;
}

TEST_F(HttpClientTest, GivesUpOnRedirectsInCircles) {
  HttpClientServer server(HttpClientServer::answering(
      [](const std::string&) { return response("302 Round", "", "Location: /round\r\n"); }));
  EXPECT_EQ(told(get(server.url())), std::to_string(WebError::badServerResponse));
  EXPECT_EQ(server.requests().size(), 21U);
}

} // namespace

} // namespace ondrel::platform
