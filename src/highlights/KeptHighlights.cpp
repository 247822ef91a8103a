#include "highlights/KeptHighlights.h"

#include "app/WindowManager.h"
#include "async/sleep.h"
#include "base/Translation.h"
#include "highlights/HighlightImport.h"
#include "highlights/file/HighlightStore.h"
#include "platform/FileStore.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "settings/SettingsKeys.h"
#include "web/WindowViewModel.h"

#include <chrono>

namespace ondrel::highlights {

namespace {

using namespace std::chrono_literals;

constexpr auto pause = 3s; // pages come first
constexpr std::size_t longestMemory = 1000;

std::string inWords(const std::string& path) {
  const auto name = path.substr(path.rfind('/') + 1);
  if (name.contains(".other-"))
    return base::trFormat("Highlights of another copy of Ondrel were kept: {}", name);
  if (name.contains(".damaged-"))
    return base::trFormat("Highlights of a damaged file were kept: {}", name);
  return base::trFormat("Your highlights can't be read: {} is damaged.", name);
}

} // namespace

async::Task<void> KeptHighlights::tell() {
  const auto path = newest();
  if (!path)
    co_return;
  for (;;) {
    const bool slept = co_await async::sleep(pause);
    if (!slept)
      co_return;
    const auto tab = services_.windowManager.windows().activeWindow();
    if (!tab || !tab->second->noticed.hasSubscribers())
      continue;
    // TRANSLATORS: a button below that highlights were kept
    const char* const button = base::tr("Import");
    tab->second->noticed.emit(
        {.text = inWords(*path), .button = button, .act = [this] { scope_.spawn(importNewest()); }});
    co_return;
  }
}

// A save may have moved the damaged file aside since it was told of.
async::Task<void> KeptHighlights::importNewest() {
  const auto path = newest();
  if (!path)
    co_return;
  const auto done = mark(*path);
  const bool isDone = co_await services_.highlightImport.importFile(*path);
  if (!isDone)
    co_return;
  const auto memory = imported() + done;
  services_.settings.defaults().set(settings::keys::importedHighlightFiles,
                                    memory.size() > longestMemory ? done : memory);
  co_await tell();
}

std::optional<std::string> KeptHighlights::newest() const {
  const auto known = imported();
  for (auto& path : services_.store.keptFiles())
    if (!known.contains(mark(path)))
      return std::move(path);
  return std::nullopt;
}

std::string KeptHighlights::imported() const {
  return services_.settings.defaults().string(settings::keys::importedHighlightFiles).value_or("");
}

// A file keeps it when it moves aside.
std::string KeptHighlights::mark(const std::string& path) const {
  const auto version = services_.files.version(path).value_or(platform::FileVersion());
  return std::to_string(version.inode) + "-" + std::to_string(version.size) + "-" +
         std::to_string(version.modified) + "\n";
}

} // namespace ondrel::highlights
