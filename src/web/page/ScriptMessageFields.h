#pragma once

#include <boost/json/fwd.hpp>

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::web {

// The one channel from page scripts to the host: window.webkit.messageHandlers.ondrel.
inline constexpr std::string_view scriptMessageHandlerName = "ondrel";

// The body of a message from a page script: a map from string to string. A body with any member of another
// type is none as a whole, which keeps the shapes that a page can send few.
class ScriptMessageFields {
 public:
  static std::optional<ScriptMessageFields> from(const boost::json::value& body);

  const std::string* find(std::string_view key) const;
  // A base-10 integer with an optional sign.
  std::optional<long long> integer(std::string_view key) const;

 private:
  std::map<std::string, std::string, std::less<>> fields_;
};

} // namespace ondrel::web
