#pragma once

#include "platform/NotificationCenter.h"
#include "platform/linux/desktop/MessageBus.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/notifications/AnswerSeal.h"

#include <functional>
#include <optional>

namespace ondrel::platform::notifications {

// Notifications that can be answered when the program has ended, through org.gtk.Notifications (GNOME Shell
// has it). An answer calls an action of the application, for which the bus starts the program where it
// doesn't run, and brings all that is needed. Anybody in the session can make such a call, so what counts is
// what this program has sealed. While the program runs, org.freedesktop.Notifications does more: it plays a
// sound, and what an answer needs stays in this process. Main thread only.
class LastingNotifications {
 public:
  // What comes and is larger isn't looked at.
  static constexpr std::size_t largestAnswer = std::size_t{16} << 10; // bytes
  static constexpr const char* answerAction = "answer-notification";

  struct Options {
    GActionMap* actions; // of the application, which others reach by the bus; outlives this
    UserDefaults& defaults;
    std::string_view sealKey; // the name of the seal's key in the defaults
    // Shows a window, for an answer that nobody can make sense of any more.
    std::function<void()> activate;
  };

  LastingNotifications(std::string applicationId, const Options& options,
                       std::function<void(const NotificationResponse&)> answered);
  ~LastingNotifications();
  LastingNotifications(const LastingNotifications&) = delete;
  LastingNotifications& operator=(const LastingNotifications&) = delete;

  // Shows it without drawing attention, if the server knows the application by its desktop file. Waits for
  // nothing.
  void show(const glib::Ref<GDBusConnection>& connection, const NotificationRequest& request,
            const std::vector<NotificationAction>& actions) const;

 private:
  GVariant* targetOf(const NotificationResponse& response) const;
  std::optional<NotificationResponse> understood(GVariant* target) const;
  void received(GVariant* target);

  const std::string applicationId_;
  GActionMap* const actions_;
  const std::function<void()> activate_;
  const std::function<void(const NotificationResponse&)> answered_;
  const AnswerSeal seal_;
  glib::Connection activations_;
};

} // namespace ondrel::platform::notifications
