// How long it takes from the event line of the mail service to the notification's call on the message bus.
// Prints one line of JSON with the medians in milliseconds, for bench/run: of the whole time, and of what is
// left of it without the time that the service took to make its answers.
#include "Bench.h"
#include "MailProgram.h"
#include "MailServer.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/network/SoupHttpClient.h"
#include "platform/linux/notifications/DesktopNotifications.h"
#include "platform/linux/text/GlibLogSink.h"
#include "support/NotificationServer.h"
#include "support/TestBus.h"

#include <atomic>
#include <thread>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;

constexpr int rounds = 100;
constexpr int warmUpRounds = 5;
constexpr auto patience = 10s;
// Mail comes one by one, to a program that sleeps.
constexpr auto pause = 50ms;

async::Task<glib::Ref<GDBusConnection>> connected(glib::Ref<GDBusConnection> connection) {
  co_return connection;
}

Clock::time_point instant(std::int64_t monotonicMicroseconds) {
  return Clock::time_point(std::chrono::microseconds(monotonicMicroseconds));
}

struct Times {
  std::vector<double> whole;
  std::vector<double> own;
};

// The calls of a check come one after the other; what the badge asks meanwhile is no part of the way.
Clock::duration answerTimes(const MailServer& server, Clock::time_point from, Clock::time_point to) {
  Clock::duration sum{};
  for (const auto& one : server.exchanges())
    if (one.method.starts_with("Email/") && one.arrival >= from && one.answered <= to)
      sum += one.answered - one.arrival;
  return sum;
}

Times deliverAll(MailServer& server, const support::NotificationServer& desktop) {
  server.waitForListener();
  Times times;
  for (int round = -warmUpRounds; round < rounds; ++round) {
    std::this_thread::sleep_for(pause);
    const int before = desktop.calls("Notify");
    const auto subject = fmt::format("Message {}", round);
    const auto written = server.deliver(subject);
    while (desktop.calls("Notify") == before) {
      if (Clock::now() - written > patience)
        fail("a message was not notified of");
      std::this_thread::sleep_for(200us);
    }
    const auto shown = desktop.notifications().back();
    if (shown.body != subject)
      fail("a notification of another message");
    if (round < 0)
      continue;
    const auto arrival = instant(shown.arrival);
    const auto whole = arrival - written;
    times.whole.push_back(Milliseconds(whole).count());
    times.own.push_back(Milliseconds(whole - answerTimes(server, written, arrival)).count());
  }
  return times;
}

} // namespace

int main() {
  platform::text::GlibLogSink::install("org.velmora.Ondrel.Bench");
  const glib::GlibEventLoop loop;
  const support::TestBus bus;
  const support::NotificationServer desktop(bus.address());
  MailServer server;
  platform::notifications::DesktopNotifications center({.applicationId = "org.velmora.Ondrel.Bench",
                                                        .applicationName = "Ondrel",
                                                        .useActivationToken = [](const std::string&) {},
                                                        .bus = [&bus] { return connected(bus.connect()); }});
  platform::network::SoupHttpClient http({.userAgent = "Ondrel"});
  MailProgram program(server.address(), http, center);

  Times times;
  std::atomic<bool> done = false;
  std::thread sender([&] {
    times = deliverAll(server, desktop);
    done = true;
    g_main_context_wakeup(nullptr);
  });
  while (!done)
    g_main_context_iteration(nullptr, TRUE);
  sender.join();
  fmt::print("{{\"whole\": {:.4f}, \"own\": {:.4f}, \"ownSlowest\": {:.4f}}}\n", median(times.whole),
             median(times.own), quantile(times.own, 1));
  return 0;
}
