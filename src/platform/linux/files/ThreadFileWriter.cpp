#include "platform/linux/files/ThreadFileWriter.h"

#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/glib/AsyncResult.h"

#include <utility>

namespace ondrel::platform::files {

namespace {

struct Work {
  std::string path;
  std::string content;
  std::expected<void, FileError> result;
};

// The store is one for this work: it has a state, and other threads have theirs.
void write(GTask* task, gpointer, gpointer data, GCancellable*) {
  auto* work = static_cast<Work*>(data);
  work->result = PosixFileStore().writeAtomically(work->path, work->content);
  g_task_return_boolean(task, TRUE);
}

} // namespace

async::Task<std::expected<void, FileError>> ThreadFileWriter::writeAtomically(std::string path,
                                                                              std::string content) {
  auto [pending, result] = glib::startAsync();
  {
    const auto task =
        glib::adopt(g_task_new(nullptr, nullptr, glib::PendingCall::callback, pending.userData));
    g_task_set_task_data(task.get(), new Work{std::move(path), std::move(content), {}},
                         [](gpointer data) { delete static_cast<Work*>(data); });
    g_task_run_in_thread(task.get(), write);
  }
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return std::unexpected(FileError{false, "cancelled"});
  co_return std::move(static_cast<Work*>(g_task_get_task_data(G_TASK(finished->get())))->result);
}

} // namespace ondrel::platform::files
