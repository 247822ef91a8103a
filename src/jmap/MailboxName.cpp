#include "jmap/MailboxName.h"

#include "base/Text.h"

#include <glib.h>

#include <memory>
#include <optional>
#include <string>

namespace ondrel::jmap {

namespace {

using Chars = std::unique_ptr<char, decltype(&g_free)>;

// Absent for what GLib's functions can't take: bytes that are no UTF-8, and a NUL, at which they stop.
std::optional<std::string> folded(const std::string& name) {
  if (!base::isValidUtf8(name) || name.contains('\0'))
    return std::nullopt;
  const Chars caseless(g_utf8_casefold(name.c_str(), -1), g_free);
  const Chars composed(g_utf8_normalize(caseless.get(), -1, G_NORMALIZE_NFC), g_free);
  return std::string(composed.get());
}

} // namespace

bool sameMailboxName(const std::string& a, const std::string& b) {
  if (a == b)
    return true;
  const auto foldedA = folded(a);
  return foldedA && foldedA == folded(b);
}

} // namespace ondrel::jmap
