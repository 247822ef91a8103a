#include "app/PersistedSession.h"

#include "base/Json.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <fmt/format.h>

namespace ondrel::app {

namespace {

namespace json = boost::json;

json::object toJson(const PersistedTab& tab) {
  json::object object{{"urlString", tab.urlString}, {"title", tab.title}};
  if (tab.interactionState)
    object["interactionState"] = base::base64Encoded(*tab.interactionState);
  object["pageZoom"] = tab.pageZoom;
  object["toolbarVisible"] = tab.toolbarVisible;
  return object;
}

json::object toJson(const PersistedWindow& window) {
  json::array tabs;
  for (const auto& tab : window.tabs)
    tabs.push_back(toJson(tab));
  json::object object{{"tabs", std::move(tabs)}};
  if (const auto& frame = window.frame)
    object["frame"] = {{"x", frame->x}, {"y", frame->y}, {"width", frame->width}, {"height", frame->height}};
  if (window.isMaximized)
    object["isMaximized"] = true;
  if (window.selectedTab != 0)
    object["selectedTab"] = window.selectedTab;
  return object;
}

// A decoding that fails as a whole, with the place and the fault in words.
struct DecodeError {
  std::string what;
};

class Decoder {
 public:
  Decoder(const json::value& value, std::string path) : value_(value), path_(std::move(path)) {}

  Decoder member(std::string_view key) const {
    const auto* found = object().if_contains(key);
    if (!found)
      fail(fmt::format("has no \"{}\"", key));
    return {*found, path_ + "." + std::string(key)};
  }

  std::optional<Decoder> optionalMember(std::string_view key) const {
    const auto* found = object().if_contains(key);
    if (!found || found->is_null())
      return std::nullopt;
    return Decoder(*found, path_ + "." + std::string(key));
  }

  template <class T>
  std::vector<T> list(T (*decodeOne)(const Decoder&)) const {
    const auto* array = value_.if_array();
    if (!array)
      fail("is not an array");
    std::vector<T> result;
    result.reserve(array->size());
    for (const auto& element : *array)
      result.push_back(decodeOne(Decoder(element, fmt::format("{}[{}]", path_, result.size()))));
    return result;
  }

  std::string string() const {
    const auto* text = value_.if_string();
    if (!text)
      fail("is not a string");
    return std::string(*text);
  }

  double number() const {
    boost::system::error_code error;
    const auto result = value_.to_number<double>(error);
    if (error)
      fail("is not a number");
    return result;
  }

  // 0 for what is no position of a list of that size.
  std::size_t index(std::size_t size) const {
    const auto position = number();
    return position >= 0 && position < static_cast<double>(size) ? static_cast<std::size_t>(position) : 0;
  }

  bool boolean() const {
    const auto* result = value_.if_bool();
    if (!result)
      fail("is not true or false");
    return *result;
  }

  base::Bytes bytes() const {
    auto result = base::base64Decoded(string());
    if (!result)
      fail("is not base64");
    return std::move(*result);
  }

 private:
  const json::object& object() const {
    const auto* result = value_.if_object();
    if (!result)
      fail("is not an object");
    return *result;
  }

  [[noreturn]] void fail(const std::string& what) const { throw DecodeError{path_ + " " + what}; }

  const json::value& value_;
  std::string path_;
};

PersistedTab decodeTab(const Decoder& from) {
  PersistedTab tab;
  tab.urlString = from.member("urlString").string();
  tab.title = from.member("title").string();
  if (const auto state = from.optionalMember("interactionState"))
    tab.interactionState = state->bytes();
  tab.pageZoom = from.member("pageZoom").number();
  tab.toolbarVisible = from.member("toolbarVisible").boolean();
  return tab;
}

PersistedWindow decodeWindow(const Decoder& from) {
  PersistedWindow window;
  window.tabs = from.member("tabs").list(&decodeTab);
  if (const auto frame = from.optionalMember("frame"))
    window.frame = PersistedFrame{frame->member("x").number(), frame->member("y").number(),
                                  frame->member("width").number(), frame->member("height").number()};
  if (const auto maximized = from.optionalMember("isMaximized"))
    window.isMaximized = maximized->boolean();
  if (const auto selected = from.optionalMember("selectedTab"))
    window.selectedTab = selected->index(window.tabs.size());
  return window;
}

} // namespace

std::string PersistedSession::encoded() const {
  json::array array;
  for (const auto& window : windows)
    array.push_back(toJson(window));
  return base::jsonText(json::object{{"windows", std::move(array)}});
}

std::expected<PersistedSession, std::string> PersistedSession::decode(std::string_view text) {
  boost::system::error_code error;
  const auto value = json::parse(text, error);
  if (error)
    return std::unexpected("not JSON: " + error.message());
  try {
    return PersistedSession{Decoder(value, "session").member("windows").list(&decodeWindow)};
  } catch (const DecodeError& failure) {
    return std::unexpected(failure.what);
  }
}

} // namespace ondrel::app
