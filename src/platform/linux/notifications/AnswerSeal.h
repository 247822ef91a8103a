#pragma once

#include <string>
#include <string_view>

namespace ondrel::platform {
class UserDefaults;
}

namespace ondrel::platform::notifications {

// Marks what the program gives to others and acts on when it comes back, in a later run too: a message
// authentication code (HMAC with SHA-256, RFC 2104). Its key is made when it is first needed and stays in the
// user's defaults, a file that nobody else may read. Main thread only.
class AnswerSeal {
 public:
  // `key` is its name in the defaults, which outlive the seal.
  AnswerSeal(UserDefaults& defaults, std::string_view key) : defaults_(defaults), key_(key) {}

  // In hexadecimal digits. Another one as soon as the key has been lost.
  std::string of(std::string_view text) const;
  bool fits(std::string_view text, std::string_view seal) const;

 private:
  std::string key() const;

  UserDefaults& defaults_;
  const std::string key_;
};

} // namespace ondrel::platform::notifications
