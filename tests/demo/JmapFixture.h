#pragma once

#include "ServiceFixture.h"

namespace ondrel::demo {

// A running service, and a client with the token.
class JmapFixture : public ServiceFixture {
 protected:
  static constexpr const char* mail = "u12345678";
  static constexpr const char* user = "u87654321";

  void SetUp() override {
    ServiceFixture::SetUp();
    token_ = newToken();
  }

  std::string newToken() {
    return std::string(boost::json::parse(order("token").body).at("accessToken").as_string());
  }
  Answer get(const std::string& path, const std::string& host = "localhost") {
    return fetch({web(path, host), "GET", {{"Authorization", "Bearer " + token_}}});
  }
  Answer post(const std::string& body, const std::string& contentType = "application/json") {
    return fetch({web("/jmap/api/"),
                  "POST",
                  {{"Authorization", "Bearer " + token_}, {"Content-Type", contentType}},
                  body});
  }
  std::string userCapability() const {
    return "http://localhost:" + std::to_string(service_.webPort()) + "/dev/user";
  }
  // The body of a request with these method calls, written as JSON.
  std::string request(const std::string& calls) const {
    return R"({"using": ["urn:ietf:params:jmap:core", "urn:ietf:params:jmap:mail", ")" + userCapability() +
           R"("], "methodCalls": )" + calls + "}";
  }
  // The method responses to several calls.
  boost::json::array calls(const std::string& json) {
    return boost::json::parse(post(request(json)).body).at("methodResponses").as_array();
  }
  // The name and arguments of the response to one call; of the arguments, the account is given.
  std::pair<std::string, boost::json::object> call(const std::string& method, const std::string& arguments,
                                                   const std::string& account = mail) {
    const auto rest = arguments.size() > 2 ? ", " + arguments.substr(1) : std::string("}");
    const auto response =
        calls(R"([[")" + method + R"(", {"accountId": ")" + account + "\"" + rest + R"(, "c0"]])").at(0);
    EXPECT_EQ(response.at(2), "c0");
    return {std::string(response.at(0).as_string()), response.at(1).as_object()};
  }
  boost::json::object answer(const std::string& method, const std::string& arguments) {
    auto [name, result] = call(method, arguments);
    EXPECT_EQ(name, method) << boost::json::serialize(result);
    return result;
  }
  // The type of the error that the call ends with.
  std::string error(const std::string& method, const std::string& arguments,
                    const std::string& account = mail) {
    const auto [name, result] = call(method, arguments, account);
    return name == "error" ? std::string(result.at("type").as_string()) : "no error";
  }
  boost::json::object deliver(const std::string& json) {
    return boost::json::parse(order("deliver", json).body).as_object();
  }

  std::string token_;
};

// The JSON of a value, for comparisons that tell what differs.
inline std::string text(const boost::json::value& value) {
  return boost::json::serialize(value);
}

} // namespace ondrel::demo
