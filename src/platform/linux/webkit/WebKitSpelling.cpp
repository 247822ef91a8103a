#include "platform/linux/webkit/WebKitSpelling.h"

#include "platform/linux/text/LanguageName.h"
#include "platform/linux/text/SafeText.h"

#include <enchant.h>

#include <algorithm>
#include <memory>

namespace ondrel::platform::webkit {

// The engine checks by the same library, but tells only of dictionaries that it was asked for by name.
std::vector<SpellingDictionary> WebKitSpelling::dictionaries() const {
  const std::unique_ptr<EnchantBroker, decltype(&enchant_broker_free)> broker(enchant_broker_init(),
                                                                              enchant_broker_free);
  std::vector<SpellingDictionary> result;
  enchant_broker_list_dicts(
      broker.get(),
      [](const char* tag, const char*, const char*, const char*, void* data) {
        auto name = text::validUtf8(tag);
        auto language = text::languageName(name);
        static_cast<std::vector<SpellingDictionary>*>(data)->push_back(
            {std::move(name), std::move(language)});
      },
      &result);
  std::ranges::sort(result, [](const auto& a, const auto& b) {
    return g_utf8_collate(a.name.c_str(), b.name.c_str()) < 0;
  });
  return result;
}

std::vector<std::string> WebKitSpelling::userLanguages() const {
  std::vector<std::string> result;
  for (const auto* const* name = g_get_language_names(); *name; ++name)
    result.emplace_back(*name);
  return result;
}

void WebKitSpelling::check(const std::vector<std::string>& tags) {
  std::vector<const char*> names;
  for (const auto& tag : tags)
    names.push_back(tag.c_str());
  names.push_back(nullptr);
  // With none of ours the engine would look for one of its own choice.
  if (!tags.empty())
    webkit_web_context_set_spell_checking_languages(context_.get(), names.data());
  webkit_web_context_set_spell_checking_enabled(context_.get(), !tags.empty());
}

} // namespace ondrel::platform::webkit
