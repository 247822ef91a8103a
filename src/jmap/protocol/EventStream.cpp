#include "jmap/protocol/EventStream.h"

#include "async/Timer.h"
#include "async/sleep.h"
#include "base/Url.h"
#include "jmap/protocol/EventLines.h"
#include "platform/HttpClient.h"

#include <utility>

namespace ondrel::jmap {

namespace {

constexpr std::chrono::seconds reconnectPause{30};
constexpr std::chrono::seconds staleLimit{90};
constexpr std::chrono::seconds staleCheckInterval{20};
constexpr std::string_view pingSeconds = "30";
constexpr std::chrono::seconds openTimeout{60};
constexpr std::chrono::seconds longestBurst{1};

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

std::string eventSourceUrl(std::string text) {
  replaceAll(text, "{types}", "Mailbox,Email");
  replaceAll(text, "{closeafter}", "no");
  replaceAll(text, "{ping}", pingSeconds);
  return text;
}

} // namespace

SSELivenessTracker::SSELivenessTracker() {
  lineArrived();
}

void SSELivenessTracker::lineArrived() {
  lastLineAt_ = async::EventLoop::current().now();
}

// The first of reader and watcher to end gives the outcome.
struct EventStream::Connection {
  std::unique_ptr<platform::HttpStream> stream;
  async::Resolver<Result<void>> ended;
  SSELivenessTracker liveness;
  // What a burst of lines has named so far.
  bool mailboxes = false;
  bool emails = false;
  std::optional<std::string> eventId = {}; // of the event that is being sent
  bool inBurst = false;
  async::Timer burstLimit = {};
};

EventStream::EventStream(JMAPClient& client, platform::HttpClient& http, Receivers receivers)
    : client_(client), http_(http), receivers_(std::move(receivers)) {
}

void EventStream::start(bool firstStart) {
  eventSourceTask_.cancel();
  eventSourceTask_ = scope_.spawn(run(firstStart));
}

void EventStream::stop() {
  eventSourceTask_.cancel();
  lastEventId_.clear();
}

async::Task<void> EventStream::run(bool firstStart) {
  if (firstStart)
    co_await receivers_.firstStart();
  const bool replaced = co_await async::cancelled();
  if (replaced)
    co_return;
  receivers_.mailboxesChanged();
  while (true) {
    const auto ended = co_await runEventSource();
    const bool cancelled = co_await async::cancelled();
    if (cancelled)
      co_return;
    if (ended)
      logger_.error("SSE stream ended without error — reconnecting in 30s");
    else
      logger_.error("Failed to fetch SSE: {}", ended.error().description());
    const bool slept = co_await async::sleep(reconnectPause);
    if (!slept)
      co_return;
  }
}

async::Task<Result<void>> EventStream::runEventSource() {
  const auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error());
  auto url = eventSourceUrl(session->eventSourceUrl);
  const auto parsed = base::Url::parse(url);
  if (!parsed || !parsed->isWeb()) {
    logger_.error("runEventSource: no eventSourceUrl in JMAP session");
    co_return Result<void>();
  }
  const auto token = co_await client_.currentAccessToken();
  if (!token)
    co_return std::unexpected(token.error());

  // No cookies.
  platform::HttpRequest request{.url = std::move(url), .timeout = openTimeout};
  request.headers = {{"Authorization", "Bearer " + *token}, {"Accept", "text/event-stream"}};
  if (!lastEventId_.empty())
    request.headers.emplace_back("Last-Event-ID", lastEventId_);
  auto stream = co_await http_.open(std::move(request));
  if (!stream)
    co_return std::unexpected(JMAPError{JMAPError::Kind::transport, stream.error().description});
  logger_.info("SSE connection opened");
  // What is no stream ends by itself. A stream need not tell what it has missed (RFC 8620, section 7.3).
  if ((*stream)->status() / 100 == 2) {
    receivers_.mailboxesChanged();
    receivers_.emailsChanged();
  }
  co_return co_await follow(std::move(*stream));
}

async::Task<Result<void>> EventStream::follow(std::unique_ptr<platform::HttpStream> stream) {
  auto [resolver, future] = async::makeFuture<Result<void>>();
  Connection connection{.stream = std::move(stream), .ended = std::move(resolver), .liveness = {}};
  async::Scope children; // after the connection: goes before it
  children.spawn(read(connection));
  children.spawn(watch(connection));
  auto ended = co_await std::move(future);
  co_return ended ? std::move(*ended) : std::unexpected(JMAPError::cancelled());
}

async::Task<void> EventStream::read(Connection& connection) {
  EventLines splitter;
  while (true) {
    const auto chunk = co_await connection.stream->read();
    if (!chunk) {
      tellChanges(connection);
      connection.ended.resolve(
          std::unexpected(JMAPError{JMAPError::Kind::transport, chunk.error().description}));
      co_return;
    }
    const bool atEnd = chunk->empty();
    for (const auto& line : atEnd ? splitter.finish() : splitter.feed(*chunk))
      take(connection, line);
    if (atEnd || !connection.stream->hasMore())
      tellChanges(connection);
    else
      limitBurst(connection);
    if (atEnd) {
      logger_.error("SSE connection closed — no more lines from server");
      connection.ended.resolve({});
      co_return;
    }
  }
}

void EventStream::take(Connection& connection, const EventLine& line) {
  connection.liveness.lineArrived();
  // An event that is cut off is to be sent again.
  if (line.id)
    connection.eventId = line.id;
  if (line.isEmpty && connection.eventId)
    lastEventId_ = *connection.eventId;
  if (!line.isData)
    return;
  connection.mailboxes |= line.namesMailbox;
  connection.emails |= line.namesEmail;
  if (line.namesEmail)
    logger_.info("SSE: Email change event received");
}

// However fast lines come, what they name is asked for at their end, or once a second.
void EventStream::limitBurst(Connection& connection) const {
  if (!std::exchange(connection.inBurst, true))
    connection.burstLimit = async::Timer(longestBurst, [this, &connection] { tellChanges(connection); });
}

void EventStream::tellChanges(Connection& connection) const {
  connection.inBurst = false;
  connection.burstLimit.stop();
  const bool emails = std::exchange(connection.emails, false);
  // The count changes with the emails, and not every server calls that a change of the mailbox.
  if (std::exchange(connection.mailboxes, false) || emails)
    receivers_.mailboxesChanged();
  if (emails)
    receivers_.emailsChanged();
}

async::Task<void> EventStream::watch(Connection& connection) {
  while (true) {
    const bool slept = co_await async::sleep(staleCheckInterval);
    if (!slept)
      co_return;
    if (async::EventLoop::current().now() - connection.liveness.lastLineAt() > staleLimit) {
      logger_.error("SSE connection stale — no data in {}s, forcing reconnect", staleLimit.count());
      connection.ended.resolve(std::unexpected(JMAPError::sseStale()));
      co_return;
    }
  }
}

} // namespace ondrel::jmap
