#include "demo/mail/Mail.h"

#include "base/Text.h"
#include "platform/linux/glib/Ref.h"

#include <fmt/chrono.h>

#include <algorithm>
#include <array>

namespace ondrel::demo::mail {

namespace {

// The few entities that the sample mail uses.
std::string withoutEntities(std::string text) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 5> entities{
      {{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}}};
  for (const auto& [entity, character] : entities)
    for (auto at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1))
      text.replace(at, entity.size(), character);
  return text;
}

// Whether a tag that begins at `at` ends a line of text.
bool endsLine(std::string_view html, std::size_t at) {
  constexpr std::array<std::string_view, 9> tags{"</p",  "<br",  "</div", "</h1", "</h2",
                                                 "</h3", "</li", "</tr",  "</ul"};
  return std::ranges::any_of(tags, [&](std::string_view tag) { return html.substr(at).starts_with(tag); });
}

std::string fieldOf(const Address& address) {
  return address.name.empty() ? address.email : fmt::format("{} <{}>", address.name, address.email);
}

} // namespace

bool Email::hasAttachment() const {
  return std::ranges::any_of(attachments, [](const Attachment& a) { return a.disposition != "inline"; });
}

std::string isoTime(std::chrono::sys_seconds time) {
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", time);
}

std::string mailTime(std::chrono::sys_seconds time) {
  return fmt::format("{:%a, %d %b %Y %H:%M:%S} +0000", time);
}

std::optional<std::chrono::sys_seconds> timeOf(const std::string& text) {
  const bool isUtc = text.find('T') == 10 && text.ends_with('Z');
  const glib::Owned<GDateTime> time(isUtc ? g_date_time_new_from_iso8601(text.c_str(), nullptr) : nullptr);
  if (!time)
    return std::nullopt;
  return std::chrono::sys_seconds(std::chrono::seconds(g_date_time_to_unix(time.get())));
}

std::string escapedHtml(const std::string& text) {
  return glib::CString(g_markup_escape_text(text.c_str(), -1)).get();
}

std::string plainTextOf(const std::string& html) {
  std::string text;
  for (std::size_t i = 0; i < html.size(); ++i) {
    if (html[i] == '<') {
      if (endsLine(html, i) && !text.empty())
        text += '\n';
      i = std::min(html.find('>', i), html.size());
    } else if (html[i] != '\n') {
      text += html[i];
    }
  }
  return withoutEntities(std::move(text));
}

std::string previewOf(const std::string& html, std::size_t limit) {
  std::string text(base::trimmed(plainTextOf(html)));
  std::ranges::replace(text, '\n', ' ');
  if (text.size() > limit)
    text.resize(static_cast<std::size_t>(g_utf8_find_prev_char(text.data(), &text[limit] + 1) - text.data()));
  return text;
}

std::string sourceOf(const Email& email) {
  std::string source;
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty())
      source += fmt::format("{}: {}\r\n", name, value);
  };
  add("From", fieldOf(email.from));
  for (const auto& address : email.to)
    add("To", fieldOf(address));
  add("Subject", email.subject.value_or(""));
  add("Date", mailTime(email.receivedAt));
  add("Message-ID", email.messageId.empty() ? "" : "<" + email.messageId + ">");
  add("MIME-Version", "1.0");
  add("Content-Type", "text/html; charset=utf-8");
  return source + "\r\n" + email.html + "\r\n";
}

} // namespace ondrel::demo::mail
