#include "demo/jmap/EmailFilter.h"

#include "platform/linux/glib/Ref.h"

#include <boost/json.hpp>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace ondrel::demo::jmap {

namespace json = boost::json;

namespace {

std::string folded(const std::string& text) {
  return glib::CString(g_utf8_casefold(text.data(), static_cast<gssize>(text.size()))).get();
}

template <class TextOf>
EmailPredicate holds(const std::string& wanted, TextOf textOf) {
  std::istringstream text(folded(wanted));
  const std::vector<std::string> words(std::istream_iterator<std::string>(text), {});
  return [words, textOf](const mail::Email& email) {
    const auto within = folded(textOf(email));
    return std::ranges::all_of(words, [&](const std::string& word) { return within.contains(word); });
  };
}

template <class T>
std::optional<T> read(const json::value& value, std::string_view key, Arguments& arguments) {
  auto result = json::try_value_to<T>(value);
  if (result)
    return *std::move(result);
  arguments.reject("the filter's " + std::string(key) + " is of a wrong type");
  return std::nullopt;
}

EmailPredicate condition(std::string_view key, const json::value& value, Arguments& arguments) {
  if (key == "hasAttachment")
    return [wanted = read<bool>(value, key, arguments)](const mail::Email& e) {
      return e.hasAttachment() == wanted;
    };
  if (key == "inMailboxOtherThan")
    return [others = read<std::set<std::string>>(value, key, arguments)](const mail::Email& email) {
      return others && !std::ranges::includes(*others, email.mailboxIds);
    };
  if (key == "header") {
    const auto header =
        read<std::vector<std::string>>(value, key, arguments).value_or(std::vector<std::string>());
    if (header.size() != 2 || header[0] != "Message-ID")
      arguments.reject("of the headers only the Message-ID is searched", "unsupportedFilter");
    return [wanted = header.empty() ? "" : header.back()](const mail::Email& email) {
      return email.messageId.contains(wanted);
    };
  }
  const auto text = read<std::string>(value, key, arguments).value_or("");
  if (key == "from")
    return holds(text, [](const mail::Email& email) { return email.from.name + " " + email.from.email; });
  if (key == "subject")
    return holds(text, [](const mail::Email& email) { return email.subject.value_or(""); });
  const bool isBefore = key == "before";
  const auto time = mail::timeOf(text);
  if (!isBefore && key != "after")
    arguments.reject(std::string(key), "unsupportedFilter");
  else if (!time)
    arguments.reject("the filter's " + std::string(key) + " is no time");
  return [time, isBefore](const mail::Email& email) { return (email.receivedAt < time) == isBefore; };
}

} // namespace

EmailPredicate emailFilter(const json::object& filter, Arguments& arguments) {
  std::vector<EmailPredicate> parts;
  bool isOr = false;
  if (const auto* name = filter.if_contains("operator")) {
    const auto* conditions = filter.if_contains("conditions");
    isOr = *name == "OR";
    if (!conditions || !conditions->is_array() || (!isOr && *name != "AND"))
      arguments.reject("an operator that is not offered here, or no conditions");
    else
      for (const auto& each : conditions->get_array())
        parts.push_back(emailFilter(
            read<json::object>(each, "conditions", arguments).value_or(json::object()), arguments));
  } else {
    for (const auto& [key, value] : filter)
      parts.push_back(condition(key, value, arguments));
  }
  return [parts = std::move(parts), isOr](const mail::Email& email) {
    const auto fits = [&](const EmailPredicate& part) { return part(email); };
    return isOr ? std::ranges::any_of(parts, fits) : std::ranges::all_of(parts, fits);
  };
}

} // namespace ondrel::demo::jmap
