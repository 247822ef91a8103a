// What an event stream of 100,000 lines takes of the program's main thread, and how many checks for new mail
// it causes. Prints one line of JSON for bench/run: processor times in seconds, and numbers of requests.
#include "Bench.h"
#include "MailProgram.h"
#include "MailServer.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/network/SoupHttpClient.h"
#include "platform/linux/text/GlibLogSink.h"
#include "support/FakeNotificationCenter.h"

#include <pthread.h>

#include <atomic>
#include <ctime>
#include <thread>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

constexpr int lines = 100'000;
// So long without a turn of the main thread, and everything has been handled.
constexpr auto calm = 300ms;

// Processor time of one thread, asked for by another.
class ThreadClock {
 public:
  explicit ThreadClock(pthread_t thread) {
    if (pthread_getcpuclockid(thread, &clock_) != 0)
      fail("a thread without a clock");
  }
  Seconds now() const {
    timespec time{};
    clock_gettime(clock_, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }
  void waitUntilCalm() const {
    auto before = Seconds(-1);
    for (auto after = now(); after != before; after = now()) {
      before = after;
      std::this_thread::sleep_for(calm);
    }
  }

 private:
  clockid_t clock_{};
};

// Every line tells of new mail.
std::string onlyEvents(const MailServer& server) {
  const auto event = server.coded(server.eventLine());
  std::string text;
  for (int i = 0; i < lines; ++i)
    text += event;
  return text;
}

// As a server sends it: pings, names of events, empty lines, and other types of data.
std::string mixedLines(const MailServer& server) {
  const std::string kinds[] = {
      ": ping\r\n",
      "event: state\n",
      server.eventLine(),
      "\n",
      "event: ping\ndata: {\"interval\":30}\n\n",
      "data: {\"@type\":\"StateChange\",\"changed\":{\"u1\":{\"Thread\":\"7\",\"EmailDelivery\":\"8\"}}}\n"};
  std::string text;
  for (int i = 0, kind = 0; i < lines; kind = (kind + 1) % 6) {
    text += server.coded(kinds[kind]);
    i += static_cast<int>(std::ranges::count(kinds[kind], '\n'));
  }
  return text;
}

std::string measure(MailServer& server, const ThreadClock& program, const std::string& text) {
  program.waitUntilCalm();
  const auto begin = program.now();
  const auto checks = server.calls("Email/changes");
  const auto badges = server.calls("Mailbox/get");
  server.write(text);
  program.waitUntilCalm();
  return fmt::format("{{\"processor\": {:.4f}, \"checks\": {}, \"badgeRefreshes\": {}, \"bytes\": {}}}",
                     (program.now() - begin).count(), server.calls("Email/changes") - checks,
                     server.calls("Mailbox/get") - badges, text.size());
}

void follow(MailServer::Coding coding, std::string_view name) {
  support::FakeNotificationCenter center;
  MailServer server(coding);
  platform::network::SoupHttpClient http({.userAgent = "Ondrel"});
  MailProgram program(server.address(), http, center);

  std::atomic<bool> done = false;
  std::thread sender([&server, &done, name, clock = ThreadClock(pthread_self())] {
    server.waitForListener();
    const auto events = measure(server, clock, onlyEvents(server));
    const auto mixed = measure(server, clock, mixedLines(server));
    fmt::print(R"("events, {0}": {1}, "mixed, {0}": {2})", name, events, mixed);
    done = true;
    g_main_context_wakeup(nullptr);
  });
  while (!done)
    g_main_context_iteration(nullptr, TRUE);
  sender.join();
}

} // namespace

int main() {
  platform::text::GlibLogSink::install("org.velmora.Ondrel.Bench");
  const glib::GlibEventLoop loop;
  fmt::print("{{");
  follow(MailServer::Coding::none, "sent as it is");
  fmt::print(", ");
  follow(MailServer::Coding::chunked, "a chunk a line");
  fmt::print("}}\n");
  return 0;
}
