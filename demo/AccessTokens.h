#pragma once

#include <string>
#include <string_view>

namespace ondrel::demo {

// The bearer token of the signed-in user: one at a time, random, made when a page asks for it.
class AccessTokens {
 public:
  // The token that is valid now, made anew when there is none.
  const std::string& current();
  bool isValid(std::string_view token) const { return !token_.empty() && token == token_; }
  void expire() { token_.clear(); }

 private:
  std::string token_;
};

} // namespace ondrel::demo
