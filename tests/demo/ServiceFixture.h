#pragma once

#include "Client.h"
#include "demo/Service.h"

#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace ondrel::demo {

// A running service on free ports, in this process.
class ServiceFixture : public testing::Test {
 protected:
  void SetUp() override {
    const auto listening = service_.listen(0, 0);
    ASSERT_TRUE(listening) << listening.error();
  }

  std::string web(const std::string& path, const std::string& host = "localhost") const {
    return "http://" + host + ":" + std::to_string(service_.webPort()) + path;
  }
  std::string control(const std::string& path) const {
    return "http://localhost:" + std::to_string(service_.controlPort()) + "/control/" + path;
  }
  Answer order(const std::string& name, const std::string& json = "{}") {
    return fetch({control(name), "POST", {}, json});
  }
  // The cookie of a fresh sign-in, as a Cookie header.
  std::string signIn() {
    const auto answer = fetch({web("/sign-in"), "POST"});
    const auto field = answer.headers.at("set-cookie");
    return field.substr(0, field.find(';'));
  }
  boost::json::value data(const std::string& path, const std::string& cookie) {
    return boost::json::parse(fetch({web("/data/" + path), "GET", {{"Cookie", cookie}}}).body);
  }

  Service service_;
};

} // namespace ondrel::demo
