#include "demo/Mail.h"

#include <fmt/core.h>
#include <glib.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace ondrel::demo {

namespace {

std::string fieldOf(const Address& address) {
  return address.name.empty() ? address.email : fmt::format("{} <{}>", address.name, address.email);
}

// The few entities that the sample mail uses.
std::string withoutEntities(std::string text) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 4> entities{
      {{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}}};
  for (const auto& [entity, character] : entities)
    for (auto at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1))
      text.replace(at, entity.size(), character);
  return text;
}

int numberAt(std::string_view text, std::size_t position, std::size_t length) {
  int number = -1;
  const auto* end = text.data() + position + length;
  const auto [stop, error] = std::from_chars(text.data() + position, end, number);
  return error == std::errc() && stop == end ? number : -1;
}

// Whether a tag that begins at `at` ends a line of text.
bool endsLine(std::string_view html, std::size_t at) {
  constexpr std::array<std::string_view, 9> tags{"</p",  "<br",  "</div", "</h1", "</h2",
                                                 "</h3", "</li", "</tr",  "</ul"};
  return std::ranges::any_of(tags, [&](std::string_view tag) { return html.substr(at).starts_with(tag); });
}

} // namespace

void Email::setUnread(bool unread) {
  if (unread)
    keywords.erase("$seen");
  else
    keywords.insert("$seen");
}

bool Email::hasAttachment() const {
  return std::ranges::any_of(attachments, [](const Attachment& a) { return a.disposition != "inline"; });
}

std::optional<std::chrono::sys_seconds> timeOf(std::string_view text) {
  constexpr std::string_view shape = "0000-00-00T00:00:00";
  if (text.size() < shape.size() + 1 || text.back() != 'Z')
    return std::nullopt;
  for (std::size_t i = 0; i < shape.size(); ++i)
    if (shape[i] == '0' ? !g_ascii_isdigit(text[i]) : text[i] != shape[i])
      return std::nullopt;
  const auto fraction = text.substr(shape.size(), text.size() - shape.size() - 1);
  if (!fraction.empty() &&
      (fraction.size() < 2 || fraction[0] != '.' ||
       !std::ranges::all_of(fraction.substr(1), [](char c) { return g_ascii_isdigit(c); }))) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(numberAt(text, 0, 4)),
                                         std::chrono::month(static_cast<unsigned>(numberAt(text, 5, 2))),
                                         std::chrono::day(static_cast<unsigned>(numberAt(text, 8, 2)))};
  const int hour = numberAt(text, 11, 2);
  const int minute = numberAt(text, 14, 2);
  const int second = numberAt(text, 17, 2);
  if (!date.ok() || hour > 23 || minute > 59 || second > 60)
    return std::nullopt;
  return std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second);
}

std::string isoTime(std::chrono::sys_seconds time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", int(date.year()), unsigned(date.month()),
                     unsigned(date.day()), clock.hours().count(), clock.minutes().count(),
                     clock.seconds().count());
}

std::string mailTime(std::chrono::sys_seconds time) {
  constexpr std::array weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  return fmt::format("{}, {:02} {} {:04} {:02}:{:02}:{:02} +0000",
                     weekdays[std::chrono::weekday(day).c_encoding()], unsigned(date.day()),
                     months[unsigned(date.month()) - 1], int(date.year()), clock.hours().count(),
                     clock.minutes().count(), clock.seconds().count());
}

std::string previewOf(const std::string& html, std::size_t limit) {
  std::string text;
  bool inTag = false;
  for (const char c : html) {
    if (c == '<')
      inTag = true;
    const char shown = inTag || c == '\n' ? ' ' : c;
    if (shown != ' ' || (!text.empty() && text.back() != ' '))
      text += shown;
    if (c == '>')
      inTag = false;
    if (text.size() > limit * 2)
      break;
  }
  text = withoutEntities(text);
  if (text.size() > limit) {
    auto end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
      --end;
    text.resize(end);
  }
  return text;
}

std::string plainTextOf(const std::string& html) {
  std::string text;
  for (std::size_t i = 0; i < html.size(); ++i) {
    if (html[i] == '<') {
      if (endsLine(html, i) && !text.empty())
        text += '\n';
      i = html.find('>', i);
      if (i == std::string::npos)
        break;
    } else if (html[i] != '\n') {
      text += html[i];
    }
  }
  return withoutEntities(std::move(text));
}

std::string escapeHtml(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
    case '&':
      escaped += "&amp;";
      break;
    case '<':
      escaped += "&lt;";
      break;
    case '>':
      escaped += "&gt;";
      break;
    case '"':
      escaped += "&quot;";
      break;
    default:
      escaped += c;
    }
  }
  return escaped;
}

std::vector<std::pair<std::string, std::string>> headersOf(const Email& email) {
  std::vector<std::pair<std::string, std::string>> headers;
  if (!email.from.name.empty() || !email.from.email.empty())
    headers.emplace_back("From", fieldOf(email.from));
  std::string to;
  for (const auto& address : email.to)
    to += (to.empty() ? "" : ", ") + fieldOf(address);
  headers.emplace_back("To", to);
  if (email.subject)
    headers.emplace_back("Subject", *email.subject);
  headers.emplace_back("Date", mailTime(email.receivedAt));
  if (!email.messageId.empty())
    headers.emplace_back("Message-ID", "<" + email.messageId + ">");
  headers.emplace_back("MIME-Version", "1.0");
  headers.emplace_back("Content-Type", "text/html; charset=utf-8");
  for (const auto& attachment : email.attachments)
    headers.emplace_back("X-Demo-Attachment", attachment.blobId);
  return headers;
}

std::string sourceOf(const Email& email) {
  std::string source;
  for (const auto& [name, value] : headersOf(email))
    source += name + ": " + value + "\r\n";
  return source + "\r\n" + email.html + "\r\n";
}

} // namespace ondrel::demo
