#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::integrations {

// What a "mailto" URL (RFC 6068) asks to be written: texts in UTF-8 without control characters, but for the
// line breaks and tabs of the body. Header fields of other names are dropped, so nothing can be attached.
struct MailtoDraft {
  MailtoDraft() = default;
  // Bytes of any kind. Never fails: what can't be read is not there.
  explicit MailtoDraft(std::string_view url);

  std::string to; // recipients, as found; empty for none
  std::optional<std::string> subject;
  std::optional<std::string> body;
  std::optional<std::string> cc;
  std::optional<std::string> bcc;

  // Cuts it until its part of the compose address has at most so many bytes: recipients between two of them,
  // the other texts at their end, and the body first. Gives the whole texts of what it has cut, empty for
  // nothing.
  std::string shortenTo(std::size_t bytes);

  bool operator==(const MailtoDraft&) const = default;
};

// The address at which the service's web application shows its editor with the draft in it.
std::string composeURL(std::string_view webAppBaseURL, const MailtoDraft& draft,
                       const std::optional<std::string>& accountParameter);

} // namespace ondrel::integrations
