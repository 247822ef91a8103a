#pragma once

#include "async/Future.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace ondrel::glib {

// What a GAsyncReadyCallback carries: awaited, it gives the GAsyncResult to finish the call with, or nothing
// when the waiting task was cancelled. The operation's callback always comes; by then nobody may be waiting,
// and the node behind `userData` frees itself. `cancellable` is cancelled when the waiter goes.
//
//   auto [pending, result] = startAsync();
//   g_file_load_contents_async(file, pending.cancellable, PendingCall::callback, pending.userData);
//   const auto finished = co_await std::move(result);
//
// Call startAsync() and hand userData to exactly one operation.
struct PendingCall {
  GCancellable* cancellable;
  gpointer userData;

  static void callback(GObject* source, GAsyncResult* result, gpointer userData);
};

std::pair<PendingCall, async::Future<Ref<GAsyncResult>>> startAsync();

} // namespace ondrel::glib
