#include "jmap/LogExcerpt.h"

#include <algorithm>

namespace ondrel::jmap {

namespace {

// Cookies with shorter values are switches, not secrets: without their name they would blot out any text.
constexpr std::size_t shortestSecret = 8;

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

void addSecret(std::vector<std::string>& secrets, std::string_view text) {
  if (text.empty())
    return;
  secrets.emplace_back(text);
  if (auto escaped = replaced(std::string(text), "/", "\\/"); escaped != text) // as some write it in JSON
    secrets.push_back(std::move(escaped));
}

} // namespace

// From front to back, so that each look reaches as far as what is still to be shown: what was left out before
// moves the rest of the text forward.
std::string redactedStart(std::string_view text, std::size_t most, const std::vector<std::string>& secrets) {
  std::size_t longest = 0;
  for (const auto& secret : secrets)
    longest = std::max(longest, secret.size());
  std::string start;
  while (start.size() < most) {
    const auto window = text.substr(0, most - start.size() + longest);
    std::size_t at = window.size();
    std::size_t size = 0;
    for (const auto& secret : secrets)
      if (const auto found = window.find(secret); found < at) {
        at = found;
        size = secret.size();
      }
    start += window.substr(0, at);
    if (size == 0)
      break;
    start += "<private>";
    text.remove_prefix(at + size);
  }
  start.resize(std::min(start.size(), most));
  return start;
}

std::vector<std::string> secretsOf(std::string_view authorization, std::string_view cookie) {
  std::vector<std::string> secrets;
  constexpr std::string_view bearer = "Bearer ";
  if (authorization.starts_with(bearer))
    authorization.remove_prefix(bearer.size());
  addSecret(secrets, authorization);
  while (!cookie.empty()) {
    const auto end = cookie.find("; ");
    const auto pair = cookie.substr(0, end);
    if (const auto equals = pair.find('='); equals != std::string_view::npos) {
      addSecret(secrets, pair);
      if (const auto value = pair.substr(equals + 1); value.size() >= shortestSecret)
        addSecret(secrets, value);
    }
    cookie.remove_prefix(end == std::string_view::npos ? cookie.size() : end + 2);
  }
  std::ranges::sort(secrets, std::greater{},
                    &std::string::size); // the longer first: it may hold a shorter one
  return secrets;
}

} // namespace ondrel::jmap
