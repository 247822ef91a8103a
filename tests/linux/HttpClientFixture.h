#pragma once

#include "HttpClientServer.h"
#include "async/Scope.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/network/SoupHttpClient.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

namespace ondrel::platform {

using namespace std::chrono_literals;

// The client with a small limit, on real sockets. Warnings of the libraries fail a test.
class HttpClientTest : public testing::Test {
 protected:
  static constexpr std::size_t largest = std::size_t{1} << 20;

  HttpClientTest() {
    g_log_set_default_handler(
        [](const char*, GLogLevelFlags level, const char* message, gpointer) {
          if (level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING))
            ADD_FAILURE() << message;
        },
        nullptr);
  }
  ~HttpClientTest() override {
    client.reset();
    runFor(20ms); // what was called off comes back
    g_log_set_default_handler(g_log_default_handler, nullptr);
  }

  static bool waitFor(const std::function<bool()>& holds, std::chrono::milliseconds limit = 10s) {
    // What the server's threads do doesn't wake the loop.
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!holds() && std::chrono::steady_clock::now() < end)
      if (!g_main_context_iteration(nullptr, FALSE))
        std::this_thread::sleep_for(1ms);
    return holds();
  }
  static void runFor(std::chrono::milliseconds time) {
    waitFor([] { return false; }, time);
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
    waitFor([&] { return result.has_value(); }, 30s);
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
