#include "platform/linux/files/JsonUserDefaults.h"

#include "base/Json.h"
#include "base/JsonReader.h"
#include "base/Log.h"
#include "base/Text.h"
#include "platform/linux/glib/Ref.h"

#include <boost/json/parse.hpp>
#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace ondrel::platform::files {

namespace {

namespace json = boost::json;

constexpr base::Logger logger("system");

} // namespace

JsonUserDefaults::JsonUserDefaults(FileStore& store, std::string path)
    : file_(store, [path = std::move(path)] { return path; },
            {.cantDecode = "Settings are ",
             .cantSave = "Settings can't be saved: ",
             .isKept = "The damaged settings are kept as ",
             .cantRead = "Settings can't be read, starting with the defaults: "},
            {.take = [this](const std::string& text) { return take(text); },
             .text = [this] { return base::jsonText(values_, 2) + "\n"; },
             .didSave = [this](bool isSaved) { didSave(isSaved); }}) {
  file_.load();
  taken_.clear();
  isLoaded_ = true;
}

void JsonUserDefaults::reread() {
  file_.reload();
  tellTaken();
}

std::expected<void, std::string> JsonUserDefaults::take(const std::string& text) {
  const auto consequence = isLoaded_ ? "left alone until it is saved" : "starting with the defaults";
  if (text.size() > largestFile)
    return std::unexpected(fmt::format("too large to be ours, {}: {}", consequence, file_.path().value()));
  json::error_code error;
  json::parse_options options;
  options.max_depth = deepestNesting;
  auto parsed = json::parse(text, error, {}, options);
  if (error || !parsed.is_object())
    return std::unexpected(fmt::format("damaged, {}: {}: {}", consequence, file_.path().value(),
                                       error ? error.message() : "not a JSON object"));
  auto theirs = std::move(parsed.as_object());
  for (const auto& key : unsaved_)
    if (const auto* ours = values_.if_contains(key))
      theirs[key] = *ours;
    else
      theirs.erase(key);
  for (const auto& [one, other] : {std::pair(&values_, &theirs), std::pair(&theirs, &values_)})
    for (const auto& [key, value] : *one)
      if (const auto* found = other->if_contains(key); !found || *found != value)
        taken_.emplace(key);
  values_ = std::move(theirs);
  return {};
}

void JsonUserDefaults::didSave(bool isSaved) {
  if (isSaved)
    unsaved_.clear();
  tellTaken();
}

void JsonUserDefaults::tellTaken() {
  for (const auto& key : std::exchange(taken_, {}))
    changed.emit(key);
}

std::optional<bool> JsonUserDefaults::boolean(std::string_view key) const {
  return base::JsonReader(values_)[key].boolean();
}

std::optional<std::int64_t> JsonUserDefaults::integer(std::string_view key) const {
  return base::JsonReader(values_)[key].integer();
}

std::optional<double> JsonUserDefaults::number(std::string_view key) const {
  return base::JsonReader(values_)[key].number();
}

std::optional<std::string> JsonUserDefaults::string(std::string_view key) const {
  return base::JsonReader(values_)[key].string();
}

void JsonUserDefaults::set(std::string_view key, bool value) {
  store(key, value);
}

void JsonUserDefaults::set(std::string_view key, std::int64_t value) {
  store(key, value);
}

void JsonUserDefaults::set(std::string_view key, double value) {
  if (std::isfinite(value))
    store(key, value);
  else
    logger.error("The setting {} can't be {}", key, value);
}

void JsonUserDefaults::set(std::string_view key, std::string value) {
  if (!base::isValidUtf8(value))
    value = glib::CString(g_utf8_make_valid(value.data(), static_cast<gssize>(value.size()))).get();
  store(key, json::string(value));
}

void JsonUserDefaults::store(std::string_view key, json::value value) {
  if (const auto* present = values_.if_contains(key); present && *present == value)
    return;
  values_[key] = std::move(value);
  didChange(key);
}

void JsonUserDefaults::remove(std::string_view key) {
  const std::string name(key); // the caller's view may lie in the value that goes
  if (values_.erase(name) > 0)
    didChange(name);
}

void JsonUserDefaults::didChange(std::string_view key) {
  unsaved_.emplace(key);
  file_.saveSoon();
  changed.emit(std::string(key));
}

} // namespace ondrel::platform::files
