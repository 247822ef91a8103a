#include "platform/linux/text/SafeText.h"

#include "platform/linux/glib/Ref.h"

namespace ondrel::platform::text {

std::string validUtf8(std::string_view text) {
  return glib::CString(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

std::string boundedUtf8(std::string_view text, std::size_t longest) {
  // Four bytes hold any character: the rest needn't be looked at.
  auto valid = validUtf8(text.substr(0, longest * 4 + 4));
  if (g_utf8_strlen(valid.c_str(), -1) <= static_cast<glong>(longest))
    return valid;
  valid.resize(static_cast<std::size_t>(g_utf8_offset_to_pointer(valid.c_str(), static_cast<glong>(longest)) -
                                        valid.c_str()));
  return valid + "…";
}

} // namespace ondrel::platform::text
