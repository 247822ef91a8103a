#include "platform/linux/glib/ReadUpTo.h"

#include "platform/linux/glib/AsyncResult.h"

namespace ondrel::glib {

namespace {
constexpr gsize pieceSize = gsize{1} << 20;
} // namespace

async::Task<std::optional<std::string>> readUpTo(std::size_t limit, Ref<GInputStream> stream) {
  std::string content;
  while (content.size() <= limit) {
    auto [pending, future] = startAsync();
    g_input_stream_read_bytes_async(stream.get(), pieceSize, G_PRIORITY_DEFAULT, pending.cancellable,
                                    PendingCall::callback, pending.userData);
    const auto result = co_await std::move(future);
    if (!result)
      co_return std::nullopt;
    Error error;
    const Owned<GBytes> bytes(g_input_stream_read_bytes_finish(stream.get(), result->get(), error.out()));
    if (!bytes)
      co_return std::nullopt;
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
    if (size == 0)
      break;
    content.append(data, size);
  }
  co_return std::move(content);
}

} // namespace ondrel::glib
