#include "platform/linux/files/JsonUserDefaults.h"

#include "base/Json.h"
#include "base/JsonReader.h"
#include "base/Log.h"
#include "base/Text.h"
#include "platform/linux/glib/Ref.h"

#include <boost/json/parse.hpp>

#include <cmath>
#include <utility>

namespace ondrel::platform::files {

namespace {

namespace json = boost::json;

constexpr base::Logger logger("system");

} // namespace

JsonUserDefaults::JsonUserDefaults(FileStore& store, std::string path)
    : store_(store), path_(std::move(path)), saving_([this] { return write(); }),
      self_(std::make_shared<JsonUserDefaults*>(this)) {
  load();
}

JsonUserDefaults::~JsonUserDefaults() {
  flush();
}

void JsonUserDefaults::load() {
  const auto content = store_.read(path_);
  if (!content) {
    damaged_ = !content.error().notFound;
    if (damaged_)
      logger.error("Settings can't be read, starting with the defaults: {}", content.error().description);
    return;
  }
  if (content->size() > largestFile) {
    damaged_ = true;
    logger.error("Settings are too large to be ours, starting with the defaults: {}", path_);
    return;
  }
  json::error_code error;
  json::parse_options options;
  options.max_depth = deepestNesting;
  auto parsed = json::parse(*content, error, {}, options);
  if (error || !parsed.is_object()) {
    damaged_ = true;
    logger.error("Settings are damaged, starting with the defaults: {}: {}", path_,
                 error ? error.message() : "not a JSON object");
    return;
  }
  values_ = std::move(parsed.as_object());
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
  unsaved_ = true;
  if (!std::exchange(savePosted_, true))
    async::EventLoop::current().post([weak = std::weak_ptr(self_)] {
      if (const auto self = weak.lock()) {
        (*self)->savePosted_ = false;
        (*self)->flush();
      }
    });
  changed.emit(std::string(key));
}

void JsonUserDefaults::flush() {
  if (!unsaved_)
    return;
  const bool isKnownToFail = saving_.problem()->has_value();
  const auto saved = saving_.run();
  if (!saved && !isKnownToFail) // one line is enough until a save succeeds again
    logger.error("Settings can't be saved: {}", saved.error());
}

RetriedSave::Result JsonUserDefaults::write() {
  if (damaged_) {
    const auto kept = store_.keepAside(path_);
    if (!kept && !kept.error().notFound)
      return std::unexpected("the damaged file can't be kept: " + kept.error().description);
    if (kept)
      logger.notice("The damaged settings are kept as {}", *kept);
    damaged_ = false;
  }
  if (const auto saved = store_.writeAtomically(path_, base::jsonText(values_, 2) + "\n"); !saved)
    return std::unexpected(saved.error().description);
  unsaved_ = false;
  return {};
}

} // namespace ondrel::platform::files
