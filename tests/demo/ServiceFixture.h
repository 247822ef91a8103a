#pragma once

#include "Client.h"
#include "demo/Service.h"
#include "platform/linux/glib/GlibEventLoop.h"

#include <boost/json.hpp>
#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ondrel::demo {

namespace json = boost::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The JSON of a value, for comparisons that tell what differs.
inline std::string text(const json::value& value) {
  return json::serialize(value);
}

// A running service on free ports, in this process, a signed-in page and a client with the token.
class ServiceFixture : public testing::Test {
 protected:
  static constexpr const char* mail = "u12345678";
  static constexpr const char* user = "u87654321";

  void SetUp() override {
    const auto listening = service_.listen(0, 0);
    ASSERT_TRUE(listening) << listening.error();
    cookie_ = signIn();
    token_ = newToken();
  }

  // `headers` are whole lines.
  Client ask(const std::string& method, const std::string& path, const std::string& headers = "",
             const std::string& body = "", const std::string& host = "localhost") {
    const auto port = path.starts_with("/control/") ? service_.controlPort() : service_.webPort();
    return {port, fmt::format("{} {} HTTP/1.0\r\nHost: {}:{}\r\n{}Content-Length: {}\r\n\r\n{}", method, path,
                              host, port, headers, body.size(), body)};
  }
  Answer get(const std::string& path, const std::string& headers = "",
             const std::string& host = "localhost") {
    return ask("GET", path, headers, "", host).answer();
  }
  Answer order(const std::string& name, const std::string& body = "{}") {
    return ask("POST", "/control/" + name, "", body).answer();
  }
  json::value asked(const std::string& name) { return json::parse(get("/control/" + name).body); }
  json::value deliver(const std::string& body) { return json::parse(order("deliver", body).body); }

  // As the signed-in page.
  Answer page(const std::string& path) { return get(path, cookie_); }
  json::value data(const std::string& path) { return json::parse(page("/data/" + path).body); }
  Answer act(const std::string& path, const std::string& body) {
    return ask("POST", "/data/" + path, cookie_, body).answer();
  }
  // The cookie of a fresh sign-in, as a header.
  std::string signIn() {
    const auto head = ask("POST", "/sign-in").answer().head;
    const auto start = head.find("Set-Cookie: ") + 12;
    return "Cookie: other=1; " + head.substr(start, head.find(';', start) - start) + "\r\n";
  }

  // As the JMAP client.
  std::string newToken() {
    return "Authorization: Bearer " +
           std::string(json::parse(order("token").body).at("accessToken").as_string()) + "\r\n";
  }
  Answer post(const std::string& body, const std::string& contentType = "application/json") {
    return ask("POST", "/jmap/api/", token_ + "Content-Type: " + contentType + "\r\n", body).answer();
  }
  std::string request(const std::string& calls) const {
    return fmt::format(R"({{"using": ["urn:ietf:params:jmap:core", "urn:ietf:params:jmap:mail",
                                      "http://localhost:{}/dev/user"], "methodCalls": {}}})",
                       service_.webPort(), calls);
  }
  json::array calls(const std::string& calls) {
    return json::parse(post(request(calls)).body).at("methodResponses").as_array();
  }
  // The name and arguments of the response to one call; of the arguments, the account is given.
  json::array call(const std::string& method, const std::string& arguments, const char* account = mail) {
    const auto rest = arguments.size() > 2 ? ", " + arguments.substr(1) : "}";
    return calls(fmt::format(R"([["{}", {{"accountId": "{}"{}, "c0"]])", method, account, rest))
        .at(0)
        .as_array();
  }
  json::value answer(const std::string& method, const std::string& arguments) {
    const auto response = call(method, arguments);
    EXPECT_EQ(response.at(0), json::value(method)) << text(response);
    return response.at(1);
  }
  // The first email of a list, with some properties.
  std::string email(const std::string& id, const std::string& properties) {
    return text(
        answer("Email/get", fmt::format(R"({{"ids": ["{}"], "properties": {}, "fetchTextBodyValues": true}})",
                                        id, properties))
            .at("list")
            .at(0));
  }

  glib::GlibEventLoop loop_;
  Service service_;
  std::string cookie_;
  std::string token_;
};

} // namespace ondrel::demo
