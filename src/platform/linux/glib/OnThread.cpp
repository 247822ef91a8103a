#include "platform/linux/glib/OnThread.h"

#include "platform/linux/glib/AsyncResult.h"

namespace ondrel::glib {

namespace {

void start(const Ref<GTask>& task, ThreadWork work) {
  g_task_set_task_data(task.get(), new ThreadWork(std::move(work)),
                       [](gpointer data) { delete static_cast<ThreadWork*>(data); });
  g_task_run_in_thread(task.get(), [](GTask* running, gpointer, gpointer data, GCancellable*) {
    (*static_cast<ThreadWork*>(data))();
    g_task_return_boolean(running, TRUE);
  });
}

} // namespace

void startOnThread(ThreadWork work) {
  start(adopt(g_task_new(nullptr, nullptr, nullptr, nullptr)), std::move(work));
}

async::Task<bool> runOnThread(ThreadWork work) {
  auto [pending, future] = startAsync();
  start(adopt(g_task_new(nullptr, pending.cancellable, PendingCall::callback, pending.userData)),
        std::move(work));
  const auto result = co_await std::move(future);
  co_return result.has_value();
}

} // namespace ondrel::glib
