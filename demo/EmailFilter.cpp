#include "demo/EmailFilter.h"

#include "demo/GLibPointers.h"
#include "demo/HeaderForms.h"

#include <boost/json.hpp>

#include <algorithm>
#include <cstring>
#include <utility>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

using Made = std::expected<EmailPredicate, MethodError>;

std::string folded(const std::string& text) {
  if (std::ranges::all_of(text, [](char c) { return g_ascii_isprint(c) || g_ascii_isspace(c); })) {
    std::string lower = text;
    std::ranges::transform(lower, lower.begin(), g_ascii_tolower);
    return lower;
  }
  const StringPtr fold(g_utf8_casefold(text.data(), static_cast<gssize>(text.size())));
  return fold.get();
}

// Words, and phrases in double quotes.
std::vector<std::string> terms(const std::string& text) {
  std::vector<std::string> terms;
  std::string term;
  bool inQuotes = false;
  for (const char c : folded(text) + " ") {
    if (c == '"' || (c == ' ' && !inQuotes)) {
      if (!term.empty())
        terms.push_back(std::exchange(term, ""));
      inQuotes = c == '"' && !inQuotes;
    } else {
      term += c;
    }
  }
  if (!term.empty())
    terms.push_back(term); // of a quote that never ends
  return terms;
}

using TextOf = std::function<std::string(const Email&)>;

EmailPredicate holds(TextOf textOf, const std::string& wanted) {
  return [textOf = std::move(textOf), terms = terms(wanted)](const Email& email) {
    const auto text = folded(textOf(email));
    return std::ranges::all_of(terms, [&](const auto& term) { return text.find(term) != std::string::npos; });
  };
}

std::string fromOf(const Email& email) {
  return email.from.name + " " + email.from.email;
}

std::string toOf(const Email& email) {
  std::string text;
  for (const auto& [name, address] : email.to)
    text += name + " " + address + "\n";
  return text;
}

std::string subjectOf(const Email& email) {
  return email.subject.value_or("");
}

std::string bodyOf(const Email& email) {
  return plainTextOf(email.html);
}

std::string everythingOf(const Email& email) {
  return fromOf(email) + "\n" + toOf(email) + subjectOf(email) + "\n" + bodyOf(email);
}

std::string nothingOf(const Email&) {
  return {};
}

MethodError wrongType(std::string_view key) {
  return {"invalidArguments", "the filter's " + std::string(key) + " is of a wrong type"};
}

Made headerCondition(const json::value& value) {
  const auto* array = value.if_array();
  if (!array || array->empty() || array->size() > 2 ||
      !std::ranges::all_of(*array, [](const json::value& v) { return v.is_string(); })) {
    return std::unexpected(wrongType("header"));
  }
  const std::string name((*array)[0].get_string());
  const auto wanted = array->size() == 2 ? folded(std::string((*array)[1].get_string())) : std::string();
  if (isSameField(name, "Message-ID") && !wanted.empty() && wanted.find_first_of("<>") == std::string::npos) {
    // Asked for by the hundreds in one filter, so without making the headers.
    return EmailPredicate([wanted](const Email& email) {
      return strcasestr(email.messageId.c_str(), wanted.c_str()) != nullptr;
    });
  }
  return EmailPredicate([name, wanted](const Email& email) {
    return std::ranges::any_of(headersOf(email), [&](const auto& header) {
      return isSameField(header.first, name) && folded(header.second).find(wanted) != std::string::npos;
    });
  });
}

Made textCondition(std::string_view key, const std::string& text) {
  constexpr std::pair<std::string_view, std::string (*)(const Email&)> fields[] = {
      {"text", everythingOf}, {"from", fromOf},  {"to", toOf},      {"subject", subjectOf},
      {"body", bodyOf},       {"cc", nothingOf}, {"bcc", nothingOf}};
  for (const auto& [name, textOf] : fields)
    if (name == key)
      return holds(textOf, text);
  if (key == "hasKeyword" || key == "notKeyword") {
    return EmailPredicate([keyword = folded(text), wanted = key == "hasKeyword"](const Email& email) {
      return email.keywords.contains(keyword) == wanted;
    });
  }
  if (key == "before" || key == "after") {
    const auto time = timeOf(text);
    if (!time)
      return std::unexpected(wrongType(key));
    return EmailPredicate([time = *time, isBefore = key == "before"](const Email& email) {
      return isBefore ? email.receivedAt < time : email.receivedAt >= time;
    });
  }
  return std::unexpected(MethodError{"unsupportedFilter", std::string(key)});
}

Made condition(const MailStore& store, std::string_view key, const json::value& value) {
  if (key == "header")
    return headerCondition(value);
  if (key == "hasAttachment") {
    if (!value.is_bool())
      return std::unexpected(wrongType(key));
    return EmailPredicate(
        [wanted = value.get_bool()](const Email& e) { return e.hasAttachment() == wanted; });
  }
  if (key == "minSize" || key == "maxSize") {
    if (!value.is_int64())
      return std::unexpected(wrongType(key));
    return EmailPredicate([limit = value.get_int64(), isLeast = key == "minSize"](const Email& email) {
      const auto size = static_cast<std::int64_t>(sourceOf(email).size());
      return isLeast ? size >= limit : size < limit;
    });
  }
  if (key == "inMailboxOtherThan") {
    std::set<std::string> others;
    const auto* array = value.if_array();
    for (const auto& id : array ? *array : json::array())
      if (id.is_string())
        others.emplace(id.get_string());
    if (!array || others.size() != array->size())
      return std::unexpected(wrongType(key));
    return EmailPredicate([others = std::move(others)](const Email& email) {
      return std::ranges::any_of(email.mailboxIds, [&](const auto& id) { return !others.contains(id); });
    });
  }
  if (!value.is_string())
    return std::unexpected(wrongType(key));
  const std::string text(value.get_string());
  if (key == "inMailbox") {
    if (!store.mailboxById(text))
      return std::unexpected(MethodError{"invalidArguments", "no such mailbox"});
    return EmailPredicate([text](const Email& email) { return email.isIn(text); });
  }
  return textCondition(key, text);
}

Made combined(const MailStore& store, const json::object& filter) {
  const auto* name = filter.at("operator").if_string();
  const auto* conditionsValue = filter.if_contains("conditions");
  const auto* conditions = conditionsValue ? conditionsValue->if_array() : nullptr;
  if (!name || !conditions || (*name != "AND" && *name != "OR" && *name != "NOT"))
    return std::unexpected(wrongType("operator"));
  std::vector<EmailPredicate> parts;
  for (const auto& value : *conditions) {
    if (!value.is_object())
      return std::unexpected(wrongType("conditions"));
    auto part = emailFilter(store, value.get_object());
    if (!part)
      return part;
    parts.push_back(std::move(*part));
  }
  const bool isAnd = *name == "AND";
  const bool isNot = *name == "NOT";
  return EmailPredicate([parts = std::move(parts), isAnd, isNot](const Email& email) {
    const auto fits = [&](const EmailPredicate& part) { return part(email); };
    return isAnd ? std::ranges::all_of(parts, fits) : std::ranges::any_of(parts, fits) != isNot;
  });
}

} // namespace

Made emailFilter(const MailStore& store, const json::object& filter) {
  if (filter.contains("operator"))
    return combined(store, filter);
  std::vector<EmailPredicate> parts;
  for (const auto& member : filter) {
    if (member.value().is_null())
      continue;
    auto part = condition(store, member.key(), member.value());
    if (!part)
      return part;
    parts.push_back(std::move(*part));
  }
  return EmailPredicate([parts = std::move(parts)](const Email& email) {
    return std::ranges::all_of(parts, [&](const EmailPredicate& part) { return part(email); });
  });
}

} // namespace ondrel::demo
