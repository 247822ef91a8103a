#include "base/ListText.h"

#include "base/Translation.h"

#include <utility>

namespace ondrel::base {

std::string commaList(const std::vector<std::string>& items) {
  std::string text;
  for (const auto& item : items) {
    if (!text.empty())
      text += trIn("between the names of a list", ", ");
    text += item;
  }
  return text;
}

std::string andList(std::vector<std::string> items) {
  if (items.size() < 2)
    return commaList(items);
  const auto last = std::move(items.back());
  items.pop_back();
  // TRANSLATORS: the end of a list of names: {0} are all of them but the last, with commas
  return trFormat("{0} and {1}", commaList(items), last);
}

} // namespace ondrel::base
