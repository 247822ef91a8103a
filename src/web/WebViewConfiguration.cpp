#include "web/WebViewConfiguration.h"

#include <map>
#include <span>

namespace ondrel::web {

namespace {

using platform::InjectionTime;

struct Entry {
  std::string_view name;
  InjectionTime time;
  bool mainFrameOnly;
};

constexpr auto atStart = InjectionTime::documentStart;
constexpr auto atEnd = InjectionTime::documentEnd;

// The order counts: later scripts rely on what earlier ones have set up.
constexpr Entry mainScripts[] = {
    {"consoleRelayScript", atStart, false}, {"composePresetScript", atStart, false},
    {"printShimScript", atStart, true},     {"notificationShimScript", atStart, true},
    {"composeHookScript", atStart, true},   {"mouseoverScript", atStart, true},
    {"titlePollScript", atEnd, true},       {"highlightHostScript", atEnd, false},
    {"mailboxMarkerScript", atEnd, true},   {"replySelectionScript", atEnd, false},
    {"filesAutoShareScript", atEnd, true},
};

constexpr Entry composeScripts[] = {
    {"consoleRelayScript", atStart, false}, {"printShimScript", atStart, true},
    {"chromeRemoverScript", atEnd, true},   {"sendWatcherScript", atEnd, true},
    {"discardWatcherScript", atEnd, true},  {"filesAutoShareScript", atEnd, true},
};

constexpr Entry watcherScripts[] = {
    {"sendWatcherScript", atEnd, true},
    {"discardWatcherScript", atEnd, true},
};

class Builder {
 public:
  explicit Builder(const PageScripts::Source& source) : source_(source) {}

  UserScripts list(std::span<const Entry> entries) {
    UserScripts scripts;
    for (const auto& entry : entries)
      if (auto script = shared(entry))
        scripts.push_back(std::move(script));
    return scripts;
  }

 private:
  std::shared_ptr<const platform::UserScript> shared(const Entry& entry) {
    if (const auto made = made_.find(entry.name); made != made_.end())
      return made->second;
    std::shared_ptr<const platform::UserScript> script;
    if (auto text = source_(entry.name))
      script = std::make_shared<platform::UserScript>(
          platform::UserScript{std::string(entry.name), std::move(*text), entry.time, entry.mainFrameOnly});
    return made_[entry.name] = script;
  }

  const PageScripts::Source& source_;
  std::map<std::string_view, std::shared_ptr<const platform::UserScript>> made_;
};

} // namespace

PageScripts::PageScripts(const Source& source) {
  Builder builder(source);
  main_ = std::make_shared<WebViewConfiguration>(WebViewConfiguration{builder.list(mainScripts), {}});
  compose_ = std::make_shared<WebViewConfiguration>(
      WebViewConfiguration{builder.list(composeScripts), {}, /*reportsTitle=*/false});
  watchers_ = builder.list(watcherScripts);
  letterState_ = source("letterStateScript").value_or("");
  selectRow_ = source("selectRowScript").value_or("");
  attachmentLink_ = source("attachmentLink").value_or("");
  printedMessage_ = source("printedMessage").value_or("");
}

UserScripts PageScripts::popupScripts(const WebViewConfiguration& opener) const {
  auto scripts = opener.userScripts;
  scripts.insert(scripts.end(), watchers_.begin(), watchers_.end());
  return scripts;
}

} // namespace ondrel::web
