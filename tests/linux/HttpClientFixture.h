#pragma once

#include "HttpClientServer.h"
#include "async/Scope.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/network/SoupHttpClient.h"
#include "support/Complaints.h"
#include "support/MainLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

namespace ondrel::platform {

using namespace std::chrono_literals;
using support::runFor;
using support::runUntil;

// The client with a small limit, on real sockets. Warnings of the libraries fail a test.
class HttpClientTest : public testing::Test {
 protected:
  static constexpr std::size_t largest = std::size_t{1} << 20;

  HttpClientTest() { support::failOnComplaints(); }
  ~HttpClientTest() override {
    client.reset();
    runFor(20ms); // what was called off comes back
  }

  template <class T>
  static async::Task<void> keep(async::Task<T> task, std::optional<T>& result) {
    result = co_await std::move(task);
  }
  template <class T>
  static T run(async::Task<T> task) {
    std::optional<T> result;
    async::Scope scope;
    scope.spawn(keep(std::move(task), result));
    runUntil([&] { return result.has_value(); }, 30s);
    if (!result)
      throw std::runtime_error("no result");
    return std::move(*result);
  }
  HttpResult<HttpResponse> send(HttpRequest request) const { return run(client->send(std::move(request))); }
  HttpResult<HttpResponse> get(const std::string& url) const { return send({.url = url}); }

  // "200 body", or the code of the error.
  static std::string told(const HttpResult<HttpResponse>& result) {
    if (!result)
      return std::to_string(result.error().code);
    return std::to_string(result->status) + " " + result->body;
  }

  glib::GlibEventLoop loop;
  std::unique_ptr<network::SoupHttpClient> client = std::make_unique<network::SoupHttpClient>(
      network::SoupHttpClientOptions{.userAgent = "Ondrel/1.2", .largestBody = largest});
};

} // namespace ondrel::platform
