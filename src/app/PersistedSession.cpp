#include "app/PersistedSession.h"

#include "base/Json.h"
#include "base/JsonReader.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

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

base::Bytes decodeBytes(const base::JsonReader& from) {
  auto bytes = base::base64Decoded(from.string().value_or(""));
  if (!bytes)
    from.complain("is not base64");
  return std::move(bytes).value_or(base::Bytes());
}

// 0 for what is no position of a list of that size.
std::size_t decodeIndex(const base::JsonReader& from, std::size_t size) {
  const auto position = from.number().value_or(0);
  return position >= 0 && position < static_cast<double>(size) ? static_cast<std::size_t>(position) : 0;
}

PersistedTab decodeTab(const base::JsonReader& from) {
  PersistedTab tab;
  from["urlString"].read(tab.urlString);
  from["title"].read(tab.title);
  if (const auto state = from["interactionState"]; state.isGiven())
    tab.interactionState = decodeBytes(state);
  from["pageZoom"].read(tab.pageZoom);
  from["toolbarVisible"].read(tab.toolbarVisible);
  return tab;
}

PersistedFrame decodeFrame(const base::JsonReader& from) {
  PersistedFrame frame;
  from["x"].read(frame.x);
  from["y"].read(frame.y);
  from["width"].read(frame.width);
  from["height"].read(frame.height);
  return frame;
}

PersistedWindow decodeWindow(const base::JsonReader& from) {
  PersistedWindow window;
  for (const auto& tab : from["tabs"].elements())
    window.tabs.push_back(decodeTab(tab));
  if (const auto frame = from["frame"]; frame.isGiven())
    window.frame = decodeFrame(frame);
  if (const auto maximized = from["isMaximized"]; maximized.isGiven())
    maximized.read(window.isMaximized);
  if (const auto selected = from["selectedTab"]; selected.isGiven())
    window.selectedTab = decodeIndex(selected, window.tabs.size());
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
  std::optional<base::JsonFault> fault;
  PersistedSession session;
  for (const auto& window : base::JsonReader(value, fault, "session")["windows"].elements())
    session.windows.push_back(decodeWindow(window));
  if (fault)
    return std::unexpected(fault->path + " " + fault->what);
  return session;
}

} // namespace ondrel::app
