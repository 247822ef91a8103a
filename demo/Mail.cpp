#include "demo/Mail.h"

#include <fmt/core.h>

#include <array>

namespace ondrel::demo {

namespace {

std::string fieldOf(const Address& address) {
  return address.name.empty() ? address.email : fmt::format("{} <{}>", address.name, address.email);
}

// The few entities that the sample mail uses.
std::string withoutEntities(std::string text) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 4> entities{
      {{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}}};
  for (const auto& [entity, character] : entities) {
    for (auto at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1)) {
      text.replace(at, entity.size(), character);
    }
  }
  return text;
}

} // namespace

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
    if (c == '<') {
      inTag = true;
    }
    const char shown = inTag || c == '\n' ? ' ' : c;
    if (shown != ' ' || (!text.empty() && text.back() != ' ')) {
      text += shown;
    }
    if (c == '>') {
      inTag = false;
    }
    if (text.size() > limit * 2) {
      break;
    }
  }
  text = withoutEntities(text);
  if (text.size() > limit) {
    auto end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
      --end;
    }
    text.resize(end);
  }
  return text;
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

std::string sourceOf(const Email& email) {
  std::string to;
  for (const auto& address : email.to) {
    to += (to.empty() ? "" : ", ") + fieldOf(address);
  }
  auto source =
      fmt::format("From: {}\r\nTo: {}\r\nSubject: {}\r\nDate: {}\r\nMessage-ID: <{}>\r\n"
                  "MIME-Version: 1.0\r\nContent-Type: text/html; charset=utf-8\r\n",
                  fieldOf(email.from), to, email.subject, mailTime(email.receivedAt), email.messageId);
  for (const auto& blobId : email.blobIds) {
    source += fmt::format("X-Demo-Attachment: {}\r\n", blobId);
  }
  return source + "\r\n" + email.html + "\r\n";
}

} // namespace ondrel::demo
