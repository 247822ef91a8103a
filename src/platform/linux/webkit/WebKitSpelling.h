#pragma once

#include "platform/desktop/SpellChecker.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

// The engine's spell checking, in all its web views. Main thread only.
class WebKitSpelling final : public SpellChecker {
 public:
  explicit WebKitSpelling(WebKitWebContext* context) : context_(glib::share(context)) {}

  std::vector<SpellingDictionary> dictionaries() const override;
  std::vector<std::string> userLanguages() const override;
  void check(const std::vector<std::string>& tags) override;

 private:
  glib::Ref<WebKitWebContext> context_;
};

} // namespace ondrel::platform::webkit
