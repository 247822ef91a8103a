#include "integrations/ScriptsManager.h"

#include "async/sleep.h"
#include "base/Log.h"
#include "base/Text.h"
#include "base/Url.h"
#include "integrations/StyleScript.h"
#include "platform/FileReader.h"
#include "platform/FileStore.h"
#include "platform/UriLauncher.h"
#include "platform/UserDefaults.h"
#include "platform/UserFolders.h"
#include "settings/AppSettings.h"
#include "web/WindowViewModel.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <utility>

namespace ondrel::integrations {

namespace {

namespace keys = settings::keys;
using platform::ScriptError;
using platform::ScriptResult;

constexpr base::Logger logger("script");
constexpr std::chrono::milliseconds loadDelay{500};
constexpr std::chrono::seconds refreshDelay{1};
constexpr const char* scriptExtension = ".js";
constexpr const char* styleExtension = ".css";
constexpr std::string_view readMeName = "/readme.txt";

std::string readMe(const std::string& displayName) {
  return "JavaScript files in this folder (.js) will run at the start of " + displayName +
         " when you have selected this in Settings > Advanced.\n"
         "CSS files will be injected when this is selected (also in Settings > Advanced).\n"
         R"(
Examples:

// alert.js
alert("Hello! I'm an alert!");

// style.css
span.app-source-name {
  font-family: Verdana;
}

/* Alternating rows */
ul.v-Sources-list li:nth-child(odd) {
  background-color: aliceblue !important;
}

@media (prefers-color-scheme: dark) {
  ul.v-Sources-list li:nth-child(odd) {
    background-color: black !important;
  }
})";
}

bool isOfKind(const std::string& name, std::string_view extension) {
  return std::filesystem::path(name).extension() == extension;
}

async::Task<void> nothing() {
  co_return;
}

async::Task<ScriptResult> null() {
  co_return boost::json::value();
}

// null where there is no page of the service, which is no failure.
async::Task<ScriptResult> evaluate(const std::weak_ptr<web::WindowViewModel>& weakTab, std::string source) {
  const auto tab = weakTab.lock();
  return tab && tab->showsService() ? tab->evaluate(std::move(source)) : null();
}

// A value that can't be carried over, such as a promise, is a value.
bool failed(const ScriptResult& result) {
  return !result && result.error().kind != ScriptError::Kind::unsupportedValue;
}

void logFailure(std::string_view what, const ScriptError& error, const std::string& place = "") {
  logger.error("ScriptsManager: {} failed: {}{}", what, base::shortDisplayLine(description(error)),
               place.empty() ? "" : " (" + place + ")");
}

// A file that ends in the middle of something breaks the ones after it, and the engine names the end of all.
// The one to blame is that which can't be read alone.
async::Task<std::string> placeOf(ScriptError error, JoinedSource source,
                                 std::weak_ptr<web::WindowViewModel> tab) {
  const bool isSyntaxError = error.message.starts_with("SyntaxError");
  for (const auto& file : source.files()) {
    if (!isSyntaxError)
      break;
    JoinedSource alone;
    alone.add(file.name, source.textOf(file));
    // Nobody calls this function.
    const auto result = co_await evaluate(tab, "(function(){\n" + alone.text() + "\n})");
    if (failed(result) && result.error().line)
      co_return alone.place(*result.error().line - 1);
  }
  co_return error.line ? source.place(*error.line) : "";
}

} // namespace

ScriptsManager::ScriptsManager(Services services) : services_(std::move(services)) {
  settingChanges_ = services_.settings.defaults().changed.subscribe([this](const std::string& key) {
    if (key == keys::injectCSS.name)
      switchCSS();
  });
  refresh();
}

std::optional<std::string> ScriptsManager::folder() const {
  const auto documents = services_.directories.documents();
  return documents ? std::optional(*documents + "/Scripts") : std::nullopt;
}

void ScriptsManager::refresh() {
  look_.cancel();
  look_ = scope_.spawn(lookIntoFolder());
}

async::Task<void> ScriptsManager::lookIntoFolder() {
  const auto path = folder();
  if (!path)
    co_return;
  const auto names = co_await services_.folders.names(*path);
  const bool isReplaced = co_await async::cancelled();
  if (isReplaced)
    co_return;
  const auto hasAny = [&names](std::string_view extension) {
    return names && std::ranges::any_of(*names, [=](const auto& name) { return isOfKind(name, extension); });
  };
  hasScripts.set(hasAny(scriptExtension));
  hasCSS.set(hasAny(styleExtension));
}

base::Subscription ScriptsManager::follow() {
  refresh();
  const auto path = folder();
  return path ? services_.folders.watch(*path, [this] { refresh(); }) : base::Subscription();
}

void ScriptsManager::openScriptsFolder() {
  const auto path = folder();
  if (!path)
    return;
  const auto readMeFile = *path + std::string(readMeName);
  if (!services_.files.exists(readMeFile)) [[maybe_unused]]
    const auto ignored = services_.files.writeAtomically(readMeFile, readMe(services_.displayName));
  services_.uriLauncher.open("file://" + base::percentEncodedPath(*path));
  scope_.spawn(refreshLater());
}

async::Task<void> ScriptsManager::refreshLater() {
  [[maybe_unused]] const bool slept = co_await async::sleep(refreshDelay);
  refresh();
}

async::Task<std::optional<JoinedSource>> ScriptsManager::joinedSource(std::string extension) {
  const auto path = folder();
  if (!path)
    co_return std::nullopt;
  auto names = co_await services_.folders.names(*path);
  if (!names)
    co_return std::nullopt;
  std::erase_if(*names, [&extension](const auto& name) { return !isOfKind(name, extension); });
  std::ranges::sort(*names);
  JoinedSource joined;
  for (const auto& name : *names) {
    const auto text = co_await services_.reader.read(*path + "/" + name, largestFile);
    if (text && base::isValidUtf8(*text))
      joined.add(name, *text);
  }
  if (joined.files().empty())
    co_return std::nullopt;
  co_return joined;
}

async::Task<void> ScriptsManager::runScripts(WeakTab tab) {
  const auto source = co_await joinedSource(scriptExtension);
  const bool isOver = co_await async::cancelled();
  if (!source || isOver)
    co_return;
  const auto result = co_await evaluate(tab, source->text());
  const bool hasLeft = co_await async::cancelled();
  if (!failed(result) || hasLeft)
    co_return;
  if (result.error().kind == ScriptError::Kind::timedOut) {
    logger.info("ScriptsManager: JS has not ended yet"); // it may ask the user something
    co_return;
  }
  const auto place = co_await placeOf(result.error(), *source, tab);
  logFailure("JS", result.error(), place);
}

async::Task<void> ScriptsManager::injectCSS(WeakTab tab) {
  const auto source = co_await joinedSource(styleExtension);
  const bool isOver = co_await async::cancelled();
  // The user may have switched it off while the files were read.
  if (!source || isOver || !services_.settings.get(keys::injectCSS))
    co_return;
  const auto result = co_await evaluate(tab, styleScript(source->text()));
  const bool hasLeft = co_await async::cancelled();
  if (!failed(result) || hasLeft)
    co_return;
  const auto line = result.error().line;
  logFailure("CSS inject", result.error(), line ? source->place(*line - firstLineOfStyles + 1) : "");
}

async::Task<void> ScriptsManager::removeCSS(WeakTab tab) {
  const auto result = co_await evaluate(tab, styleRemoval);
  const bool hasLeft = co_await async::cancelled();
  if (failed(result) && !hasLeft)
    logFailure("CSS remove", result.error());
}

ScriptsManager::Tab ScriptsManager::activeTab() const {
  return resolveActiveWebView ? resolveActiveWebView() : nullptr;
}

void ScriptsManager::runScriptsInActiveWebView() {
  if (const auto tab = activeTab())
    scope_.spawn(runScripts(tab));
}

void ScriptsManager::switchCSS() {
  styleSwitch_.cancel();
  if (const auto tab = activeTab())
    styleSwitch_ = scope_.spawn(services_.settings.get(keys::injectCSS) ? injectCSS(tab) : removeCSS(tab));
}

async::Task<void> ScriptsManager::pageDidFinish(const Tab& tab) {
  const bool isActive = tab && activeTab() == tab;
  const bool runs = isActive && services_.settings.get(keys::runJS);
  const bool injects = isActive && services_.settings.get(keys::injectCSS);
  return runs || injects ? applyLater(tab, runs, injects) : nothing();
}

async::Task<void> ScriptsManager::applyLater(WeakTab tab, bool runs, bool injects) {
  const bool sleptThrough = co_await async::sleep(loadDelay);
  if (!sleptThrough)
    co_return;
  if (injects)
    co_await injectCSS(tab);
  if (runs)
    co_await runScripts(tab);
}

} // namespace ondrel::integrations
