#pragma once

#include "Bench.h"
#include "platform/linux/glib/Ref.h"

#include <boost/json/object.hpp>
#include <libsoup/soup.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace ondrel::bench {

// A mail service for the program's own JMAP client: session, Email/get, Email/changes, Mailbox/get and an
// event stream for one listener, all on a thread of its own. It writes down when it was asked and when it had
// its answer ready. May be asked from any thread.
class MailServer {
 public:
  struct Exchange {
    std::string method; // of the first call
    Clock::time_point arrival;
    Clock::time_point answered;
  };

  // How the stream is sent: as it is until the connection ends, or as chunks (RFC 9112, section 7.1).
  enum class Coding { none, chunked };

  explicit MailServer(Coding coding = Coding::chunked);
  ~MailServer();
  MailServer(const MailServer&) = delete;
  MailServer& operator=(const MailServer&) = delete;

  std::string address() const; // ends with a slash
  void waitForListener();

  // One more message in the inbox, of which the stream tells. The moment before the line was written.
  Clock::time_point deliver(const std::string& subject);
  // The text as one piece of the stream; empty for an empty one.
  std::string coded(std::string_view text) const;
  // Sends such pieces; comes back when the kernel has taken the last byte.
  void write(std::string_view bytes);
  // The line that tells of the present state.
  std::string eventLine() const;

  std::vector<Exchange> exchanges() const;
  long calls(std::string_view method) const;

 private:
  void run();
  void serve(SoupServerMessage* message);
  void answerCall(SoupServerMessage* message, Clock::time_point arrival);
  void openStream(SoupServerMessage* message);
  boost::json::object arguments(std::string_view method, const boost::json::object& asked) const;
  boost::json::object email(std::string_view id) const;

  const Coding coding_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> subjects_; // of all mail; their number is the state
  std::vector<Exchange> exchanges_;
  glib::Ref<GSocket> listener_;
  glib::Ref<GIOStream> stream_;
  unsigned port_ = 0;
  GMainContext* context_;
  GMainLoop* loop_;
  std::thread thread_;
};

} // namespace ondrel::bench
