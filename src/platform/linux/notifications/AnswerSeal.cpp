#include "platform/linux/notifications/AnswerSeal.h"

#include "platform/UserDefaults.h"
#include "platform/linux/glib/Ref.h"

#include <fmt/format.h>
#include <glib.h>

#include <random>

namespace ondrel::platform::notifications {

namespace {

constexpr std::size_t keyLength = 64; // hexadecimal digits

std::string newKey() {
  std::random_device random; // the system's, which can't be foretold
  std::string key;
  while (key.size() < keyLength)
    key += fmt::format("{:08x}", random());
  return key;
}

} // namespace

std::string AnswerSeal::key() const {
  auto key = defaults_.string(key_);
  if (!key || key->size() != keyLength) {
    key = newKey();
    defaults_.set(key_, *key);
  }
  return *key;
}

std::string AnswerSeal::of(std::string_view text) const {
  const auto secret = key();
  return glib::CString(g_compute_hmac_for_data(G_CHECKSUM_SHA256,
                                               reinterpret_cast<const guchar*>(secret.data()), secret.size(),
                                               reinterpret_cast<const guchar*>(text.data()), text.size()))
      .get();
}

bool AnswerSeal::fits(std::string_view text, std::string_view seal) const {
  const auto right = of(text);
  if (seal.size() != right.size())
    return false;
  // The time that it takes tells nobody how much of a guess was right.
  unsigned difference = 0;
  for (std::size_t i = 0; i < seal.size(); ++i)
    difference |= static_cast<unsigned char>(seal[i]) ^ static_cast<unsigned char>(right[i]);
  return difference == 0;
}

} // namespace ondrel::platform::notifications
