#include "platform/linux/webkit/WebKitSessionState.h"

#include "platform/linux/glib/Ref.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>

namespace ondrel::platform::webkit {

namespace {

constexpr std::array<std::uint8_t, 8> mark = {'O', 'N', 'D', 'R', 'E', 'L', 'S', '1'};
constexpr std::size_t checksumSize = 32;

using Checksum = std::array<std::uint8_t, checksumSize>;

Checksum checksumOf(std::span<const std::uint8_t> bytes) {
  Checksum result{};
  auto* sum = g_checksum_new(G_CHECKSUM_SHA256);
  g_checksum_update(sum, bytes.data(), static_cast<gssize>(bytes.size()));
  gsize size = result.size();
  g_checksum_get_digest(sum, result.data(), &size);
  g_checksum_free(sum);
  return result;
}

std::optional<std::span<const std::uint8_t>> unsealed(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < mark.size() + checksumSize || !std::ranges::equal(bytes.first(mark.size()), mark))
    return std::nullopt;
  const auto checksum = bytes.subspan(mark.size(), checksumSize);
  const auto content = bytes.subspan(mark.size() + checksumSize);
  if (!std::ranges::equal(checksum, checksumOf(content)))
    return std::nullopt;
  return content;
}

struct StateDeleter {
  void operator()(WebKitWebViewSessionState* state) const { webkit_web_view_session_state_unref(state); }
};
using State = std::unique_ptr<WebKitWebViewSessionState, StateDeleter>;

} // namespace

std::optional<base::Bytes> sessionStateOf(WebKitWebView* view) {
  if (!webkit_back_forward_list_get_current_item(webkit_web_view_get_back_forward_list(view)))
    return std::nullopt;
  const State state(webkit_web_view_get_session_state(view));
  const glib::Owned<GBytes> serialized(webkit_web_view_session_state_serialize(state.get()));
  if (!serialized)
    return std::nullopt;
  gsize size = 0;
  const auto* data = static_cast<const std::uint8_t*>(g_bytes_get_data(serialized.get(), &size));
  const std::span content(data, size);
  const auto checksum = checksumOf(content);

  base::Bytes result(mark.begin(), mark.end());
  result.insert(result.end(), checksum.begin(), checksum.end());
  result.insert(result.end(), content.begin(), content.end());
  return result;
}

bool restoreSessionState(WebKitWebView* view, const base::Bytes& bytes) {
  const auto content = unsealed(bytes);
  if (!content)
    return false;
  const glib::Owned<GBytes> data(g_bytes_new(content->data(), content->size()));
  const State state(webkit_web_view_session_state_new(data.get()));
  if (!state)
    return false;
  webkit_web_view_restore_session_state(view, state.get());
  return webkit_back_forward_list_get_current_item(webkit_web_view_get_back_forward_list(view)) != nullptr;
}

} // namespace ondrel::platform::webkit
