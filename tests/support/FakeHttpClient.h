#pragma once

#include "async/Future.h"
#include "async/Timer.h"
#include "async/sleep.h"
#include "platform/CookieStore.h"
#include "platform/HttpClient.h"
#include "platform/desktop/SleepMonitor.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::support {

// A body that comes when the test says so.
class FakeHttpStream final : public platform::HttpStream {
 public:
  // Shared with the test, which outlives the stream or not.
  struct Feed {
    std::deque<platform::HttpResult<std::string>> chunks;
    std::optional<async::Resolver<bool>> waiting;
    bool ended = false;
    bool gone = false; // the client has let go of the stream
    bool more = false; // what the stream says of bytes that have arrived besides
    std::optional<std::int64_t> length;
    std::optional<async::Duration> limit; // of a wait

    void give(platform::HttpResult<std::string> chunk) {
      chunks.push_back(std::move(chunk));
      if (auto resolver = std::exchange(waiting, std::nullopt))
        resolver->resolve(true);
    }
    void end() { give(std::string()); }
  };

  FakeHttpStream(std::shared_ptr<Feed> feed, int status) : feed_(std::move(feed)), status_(status) {}
  ~FakeHttpStream() override { feed_->gone = true; }
  int status() const override { return status_; }
  std::optional<std::int64_t> length() const override { return feed_->length; }
  async::Task<platform::HttpResult<std::string>> read() override {
    while (feed_->chunks.empty()) {
      auto [resolver, future] = async::makeFuture<bool>();
      feed_->waiting = std::move(resolver);
      async::Timer timer;
      if (feed_->limit)
        timer = async::Timer(*feed_->limit, [feed = feed_] {
          feed->give(std::unexpected(platform::WebError{platform::WebError::Domain::network,
                                                        platform::WebError::timedOut, "timed out"}));
        });
      const auto came = co_await std::move(future);
      if (!came)
        co_return std::unexpected(platform::WebError{platform::WebError::Domain::network,
                                                     platform::WebError::cancelled, "cancelled"});
    }
    auto chunk = std::move(feed_->chunks.front());
    feed_->chunks.pop_front();
    co_return chunk;
  }
  bool hasMore() const override { return feed_->more; }

 private:
  std::shared_ptr<Feed> feed_;
  int status_;
};

// Records requests and answers them as the test says, a turn or a time later. A request whose time has run
// out has failed.
class FakeHttpClient final : public platform::HttpClient {
 public:
  using Answer = std::function<platform::HttpResult<platform::HttpResponse>(const platform::HttpRequest&)>;

  static platform::HttpResult<platform::HttpResponse> ok(std::string body) {
    return platform::HttpResponse{200, {}, std::move(body)};
  }
  static platform::WebError failure(std::string description) {
    return {platform::WebError::Domain::network, platform::WebError::unknown, std::move(description)};
  }

  async::Task<platform::HttpResult<platform::HttpResponse>> send(platform::HttpRequest request) override {
    requests.push_back(request);
    co_await async::nextTurn();
    if (delay > async::Duration()) {
      const bool slept = co_await async::sleep(std::min(delay, request.timeout));
      if (!slept || delay > request.timeout)
        co_return std::unexpected(failure(slept ? "The request timed out." : "cancelled"));
    }
    auto response = answer(request);
    if (response && request.largestBody && response->body.size() > *request.largestBody)
      co_return std::unexpected(failure("The response is too large."));
    co_return response;
  }
  async::Task<platform::HttpResult<std::unique_ptr<platform::HttpStream>>>
  open(platform::HttpRequest request) override {
    opened.push_back(request);
    co_await async::nextTurn();
    if (openFailure)
      co_return std::unexpected(*openFailure);
    feeds.push_back(std::make_shared<FakeHttpStream::Feed>());
    feeds.back()->limit = request.bodyTimeout;
    feeds.back()->length = streamLength;
    co_return std::make_unique<FakeHttpStream>(feeds.back(), streamStatus);
  }

  Answer answer = [](const platform::HttpRequest&) { return ok("{}"); };
  async::Duration delay{0}; // of answers
  std::optional<platform::WebError> openFailure;
  int streamStatus = 200;
  std::optional<std::int64_t> streamLength;
  std::vector<platform::HttpRequest> requests;
  std::vector<platform::HttpRequest> opened;
  std::vector<std::shared_ptr<FakeHttpStream::Feed>> feeds; // one for each stream that was opened
};

class FakeCookieStore final : public platform::CookieStore {
 public:
  async::Task<std::vector<platform::Cookie>> allCookies() override { co_return cookies; }
  std::vector<platform::Cookie> cookies;
};

class FakeSleepMonitor final : public platform::SleepMonitor {};

} // namespace ondrel::support
