#include "platform/linux/glib/AsyncResult.h"

namespace ondrel::glib {

namespace {

struct Node {
  Ref<GCancellable> cancellable;
  async::Resolver<Ref<GAsyncResult>> resolver;
};

} // namespace

void PendingCall::callback(GObject*, GAsyncResult* result, gpointer userData) {
  const std::unique_ptr<Node> node(static_cast<Node*>(userData));
  node->resolver.resolve(share(result));
}

std::pair<PendingCall, async::Future<Ref<GAsyncResult>>> startAsync() {
  auto [resolver, future] = async::makeFuture<Ref<GAsyncResult>>();
  auto cancellable = adopt(g_cancellable_new());
  resolver.onAbandon([cancellable] { g_cancellable_cancel(cancellable.get()); });
  auto* raw = cancellable.get();
  auto* node = new Node{std::move(cancellable), std::move(resolver)};
  return {PendingCall{raw, node}, std::move(future)};
}

} // namespace ondrel::glib
