#include "integrations/MailtoDraft.h"

#include "base/Text.h"
#include "base/Url.h"

#include <cctype>

namespace ondrel::integrations {

namespace {

constexpr std::string_view spaces = "\r\n\t";

bool isHex(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

bool hasBrokenEscape(std::string_view text) {
  for (auto at = text.find('%'); at != text.npos; at = text.find('%', at + 1))
    if (at + 2 >= text.size() || !isHex(text[at + 1]) || !isHex(text[at + 2]))
      return true;
  return false;
}

// Where the bytes behind the escapes are no text, the escapes are the text.
std::string decoded(std::string_view text) {
  auto result = base::percentDecoded(text);
  if (!base::isValidUtf8(result))
    result = base::isValidUtf8(text) ? text : std::string_view();
  return result;
}

// How many bytes the control character has that the text begins with (C0, DEL or, in two bytes, C1).
std::size_t controlAtStart(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x20 || first == 0x7F)
    return 1;
  const bool isC1 = first == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0;
  return isC1 ? 2 : 0;
}

// Nothing that could end a line of a header: one space stands for any number of control characters.
std::string oneLine(std::string_view text) {
  std::string result;
  bool wasControl = false;
  while (!text.empty()) {
    const auto control = controlAtStart(text);
    if (control == 0) {
      if (wasControl && !result.empty())
        result += ' ';
      result += text.front();
    }
    wasControl = control > 0;
    text.remove_prefix(wasControl ? control : 1);
  }
  return result;
}

std::string lines(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto control = spaces.contains(text.front()) ? 0 : controlAtStart(text);
    if (control == 0)
      result += text.front();
    text.remove_prefix(control == 0 ? 1 : control);
  }
  return result;
}

// The value of the first item of that name, whatever its case; absent also when that item has no "=".
std::optional<std::string> lookUp(std::string_view query, std::string_view name) {
  while (!query.empty()) {
    const auto item = query.substr(0, query.find('&'));
    query.remove_prefix(std::min(query.size(), item.size() + 1));
    const auto equals = item.find('=');
    if (base::lowercasedAscii(base::percentDecoded(item.substr(0, equals))) == name)
      return equals == item.npos ? std::nullopt : std::optional(decoded(item.substr(equals + 1)));
  }
  return std::nullopt;
}

std::string_view queryOf(std::string_view url) {
  url = url.substr(0, url.find('#'));
  const auto mark = url.find('?');
  return mark == url.npos ? std::string_view() : url.substr(mark + 1);
}

std::string recipients(std::string_view url) {
  const auto colon = url.find(':');
  if (colon == url.npos)
    return {};
  const auto text = url.substr(colon + 1, url.find('?', colon) - colon - 1);
  const bool staysAsItIs = hasBrokenEscape(text) && base::isValidUtf8(text);
  return staysAsItIs ? std::string(text) : decoded(text);
}

bool beginsCharacter(std::string_view text, std::size_t at) {
  return at >= text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80;
}

// How many bytes of the text's beginning, whole characters, have room when they are encoded.
std::size_t fitting(std::string_view text, std::size_t room) {
  std::size_t fits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto size = base::percentEncodedQueryValue(text.substr(i, 1)).size();
    if (size > room)
      break;
    room -= size;
    if (beginsCharacter(text, i + 1))
      fits = i + 1;
  }
  return fits;
}

// Takes the room of one query item, and cuts its text where that isn't enough.
class Shortening {
 public:
  explicit Shortening(std::size_t room) : room_(room) {}

  void fit(std::string_view name, std::string& text, bool isList) {
    take(name.size() + 2);
    const auto whole = text;
    auto fits = fitting(whole, room_);
    if (fits < whole.size()) {
      const auto comma = isList ? whole.rfind(',', fits) : fits;
      fits = comma == whole.npos ? 0 : comma;
      cut += (cut.empty() ? "" : "\n\n") + whole;
      text.resize(fits);
    }
    take(base::percentEncodedQueryValue(text).size());
  }

  std::string cut;

 private:
  void take(std::size_t bytes) { room_ -= std::min(room_, bytes); }

  std::size_t room_;
};

} // namespace

MailtoDraft::MailtoDraft(std::string_view url) {
  const auto query = queryOf(url);
  const auto header = [query](std::string_view name) {
    const auto value = lookUp(query, name);
    return value ? std::optional(oneLine(*value)) : std::nullopt;
  };
  to = header("to").value_or(oneLine(recipients(url)));
  subject = header("subject");
  if (const auto text = lookUp(query, "body"))
    body = lines(*text);
  cc = header("cc");
  bcc = header("bcc");
}

std::string MailtoDraft::shortenTo(std::size_t bytes) {
  Shortening shortening(bytes);
  shortening.fit("to", to, true);
  if (cc)
    shortening.fit("cc", *cc, true);
  if (bcc)
    shortening.fit("bcc", *bcc, true);
  if (subject)
    shortening.fit("subject", *subject, false);
  if (body)
    shortening.fit("body", *body, false);
  return std::move(shortening.cut);
}

std::string composeURL(std::string_view webAppBaseURL, const MailtoDraft& draft,
                       const std::optional<std::string>& accountParameter) {
  auto url = std::string(webAppBaseURL) + "mail/compose";
  char separator = '?';
  const auto add = [&url, &separator](std::string_view name, const std::optional<std::string>& value) {
    if (!value)
      return;
    url.append({separator}).append(name).append("=").append(base::percentEncodedQueryValue(*value));
    separator = '&';
  };
  add("u", accountParameter);
  add("to", draft.to.empty() ? std::nullopt : std::optional(draft.to));
  add("subject", draft.subject);
  add("body", draft.body);
  add("cc", draft.cc);
  add("bcc", draft.bcc);
  return url;
}

} // namespace ondrel::integrations
