#include "demo/HeaderForms.h"

#include <boost/json.hpp>
#include <glib.h>

#include <sstream>

namespace ondrel::demo {

namespace json = boost::json;

namespace {

json::array messageIdsIn(const std::string& value) {
  json::array ids;
  std::istringstream words(value);
  for (std::string word; words >> word;)
    if (word.size() > 2 && word.front() == '<' && word.back() == '>')
      ids.emplace_back(word.substr(1, word.size() - 2));
  return ids;
}

std::optional<json::value> inForm(const Email& email, const std::string& field, const std::string& form,
                                  const std::string& value) {
  if (form == "asRaw")
    return json::value(" " + value);
  if (form == "asText")
    return json::value(value);
  if (form == "asMessageIds")
    return json::value(messageIdsIn(value));
  if (form == "asDate" && isSameField(field, "Date"))
    return json::value(isoTime(email.receivedAt));
  if (form == "asAddresses" && isSameField(field, "From"))
    return addressesJson(email.from);
  if (form == "asAddresses" && isSameField(field, "To"))
    return addressesJson(email.to);
  return std::nullopt;
}

} // namespace

bool isSameField(std::string_view a, std::string_view b) {
  return a.size() == b.size() && g_ascii_strncasecmp(a.data(), b.data(), a.size()) == 0;
}

json::value addressesJson(const std::vector<Address>& addresses) {
  json::array list;
  for (const auto& [name, email] : addresses)
    list.push_back({{"name", name.empty() ? json::value(nullptr) : json::value(name)}, {"email", email}});
  return list.empty() ? json::value(nullptr) : json::value(std::move(list));
}

json::value addressesJson(const Address& address) {
  const bool isNobody = address.name.empty() && address.email.empty();
  return addressesJson(isNobody ? std::vector<Address>() : std::vector<Address>{address});
}

std::optional<json::value> headerProperty(const Email& email, const std::string& property) {
  std::vector<std::string> words;
  std::istringstream text(property);
  for (std::string word; std::getline(text, word, ':');)
    words.push_back(word);
  const bool isAll = words.size() > 2 && words.back() == "all";
  if (isAll)
    words.pop_back();
  if (words.size() < 2 || words.size() > 3 || words[0] != "header" || words[1].empty())
    return std::nullopt;
  const auto form = words.size() == 3 ? words[2] : std::string("asRaw");
  if (!inForm(email, words[1], form, ""))
    return std::nullopt;
  json::array values;
  for (const auto& [name, value] : headersOf(email))
    if (isSameField(name, words[1]))
      values.push_back(inForm(email, name, form, value).value_or(nullptr));
  if (isAll)
    return json::value(values);
  return values.empty() ? json::value(nullptr) : values.back();
}

} // namespace ondrel::demo
