#pragma once

#include <jsc/jsc.h>

#include <optional>
#include <string>

namespace ondrel::webext {

// For as long as it lives, exceptions of the context are swallowed here and don't reach the page's code.
// Keeps the first one's text.
class CaughtExceptions {
 public:
  explicit CaughtExceptions(JSCContext* context);
  ~CaughtExceptions();
  CaughtExceptions(const CaughtExceptions&) = delete;
  CaughtExceptions& operator=(const CaughtExceptions&) = delete;

  const std::optional<std::string>& text() const { return text_; }

 private:
  JSCContext* context_;
  std::optional<std::string> text_;
};

// The string value of a script value, in valid UTF-8 and up to its first NUL.
std::string stringValue(JSCValue* value);

// The value as JSON; absent when JSON has no text for it (undefined, a function, a cycle, an endless depth),
// or when code of the page that takes part (toJSON, a getter) throws. Runs code of the page.
std::optional<std::string> jsonText(JSCValue* value);

} // namespace ondrel::webext
