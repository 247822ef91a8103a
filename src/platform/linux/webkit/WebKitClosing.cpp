#include "platform/linux/webkit/WebKitClosing.h"

#include "async/Deadline.h"
#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/webkit/WebKitMessages.h"

#include <utility>

namespace ondrel::platform::webkit {

async::Task<std::optional<LeaveReply>> WebKitClosing::ask(async::Duration deadline) {
  auto answer = co_await async::withDeadline(deadline, pageAnswer());
  if (!answer)
    co_return std::nullopt;
  co_return std::move(*answer);
}

async::Task<WebKitClosing::Objection> WebKitClosing::pageAnswer() {
  auto [resolver, future] = async::makeFuture<Objection>();
  asker_.emplace(std::move(resolver));
  scope_.spawn(waitForPage());
  ++underWay_;
  webkit_web_view_try_close(view_);
  auto answer = co_await std::move(future);
  co_return answer ? std::move(*answer) : std::nullopt;
}

// Its task starts on a later turn, and so its message goes behind the question.
async::Task<void> WebKitClosing::waitForPage() {
  auto [pending, future] = glib::startAsync();
  webkit_web_view_send_message_to_page(view_, webkit_user_message_new(webkit::areYouThere, nullptr),
                                       pending.cancellable, glib::PendingCall::callback, pending.userData);
  [[maybe_unused]] const auto answered = co_await std::move(future);
  if (--underWay_ == 0)
    settle(std::nullopt);
}

void WebKitClosing::settle(Objection objection) {
  if (auto asker = std::exchange(asker_, std::nullopt))
    asker->resolve(std::move(objection));
}

bool WebKitClosing::takeQuestion(LeaveReply& reply) {
  if (underWay_ == 0)
    return false;
  // Nobody waits any more for a page that took too long, or for the second frame of one: it stays, for
  // whatever else was decided is done without it.
  auto taken = std::move(reply);
  if (asker_ && !asker_->abandoned())
    settle(watched(std::move(taken)));
  return true;
}

// The engine's time starts again with the reply.
LeaveReply WebKitClosing::watched(LeaveReply reply) {
  return {[this, alive = std::weak_ptr(alive_), inner = std::move(reply)](bool leave) mutable {
            std::move(inner)(leave);
            if (alive.expired())
              return;
            ++underWay_;
            scope_.spawn(waitForPage());
          },
          false};
}

} // namespace ondrel::platform::webkit
