#include "ui/commands/ActionName.h"

#include "base/Text.h"

namespace ondrel::ui {

std::string actionName(std::string_view title) {
  std::string result;
  for (const char c : base::lowercasedAscii(title)) {
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
      result += c;
    else if (c != '\'' && !result.empty() && result.back() != '-')
      result += '-';
  }
  if (result.ends_with('-'))
    result.pop_back();
  return result;
}

} // namespace ondrel::ui
