#include "platform/linux/desktop/AutostartEntry.h"

#include "base/Translation.h"

#include <gio/gdesktopappinfo.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>

namespace ondrel::platform::desktop {

namespace {

struct FreeKeyFile {
  void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;
// Older GNOME's own switch.
constexpr const char* gnomeSwitch = "X-GNOME-Autostart-enabled";

// As the standard of desktop entries quotes an argument of Exec.
std::string quoted(const std::string& argument) {
  std::string result = "\"";
  for (const char c : argument) {
    if (std::string_view("\"`$\\").contains(c))
      result += '\\';
    result += c;
    if (c == '%')
      result += '%';
  }
  return result + "\"";
}

std::string execLine(const std::vector<std::string>& command) {
  std::string line;
  for (const auto& word : command)
    line += (line.empty() ? "" : " ") + quoted(word);
  return line;
}

std::vector<std::string> wordsOf(GKeyFile* file) {
  const glib::CString line(g_key_file_get_string(file, group, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr));
  int count = 0;
  char** words = nullptr;
  if (!line || !g_shell_parse_argv(line.get(), &count, &words, nullptr))
    return {};
  std::vector<std::string> result(words, words + count);
  g_strfreev(words);
  for (auto& word : result)
    for (auto at = word.find("%%"); at != std::string::npos; at = word.find("%%", at + 1))
      word.erase(at, 1);
  return result;
}

bool isSame(const std::vector<std::string>& command, const std::vector<std::string>& wanted) {
  std::error_code error;
  return command.size() == wanted.size() && !command.empty() &&
         std::equal(command.begin() + 1, command.end(), wanted.begin() + 1) &&
         std::filesystem::equivalent(command.front(), wanted.front(), error);
}

} // namespace

AutostartEntry::AutostartEntry(FileStore& files, Options options)
    : files_(files), options_(std::move(options)),
      path_(options_.folder + "/" + options_.applicationId + ".desktop"),
      watch_(path_, [this] { changed.emit(); }) {
}

bool AutostartEntry::isEnabled() const {
  const auto text = files_.read(path_);
  const KeyFile file(g_key_file_new());
  if (!text || !g_key_file_load_from_data(file.get(), text->data(), text->size(), G_KEY_FILE_NONE, nullptr))
    return false;
  if (g_key_file_has_key(file.get(), group, gnomeSwitch, nullptr) &&
      !g_key_file_get_boolean(file.get(), group, gnomeSwitch, nullptr))
    return false;
  const auto entry = glib::adopt(g_desktop_app_info_new_from_keyfile(file.get()));
  return entry && !g_desktop_app_info_get_is_hidden(entry.get()) &&
         g_desktop_app_info_get_show_in(entry.get(), nullptr) &&
         isSame(wordsOf(file.get()), options_.command);
}

async::Task<std::expected<void, std::string>> AutostartEntry::setEnabled(bool enabled) {
  const auto done = enabled ? files_.writeAtomically(path_, content()) : files_.removeRecursively(path_);
  changed.emit();
  if (!done)
    co_return std::unexpected(done.error().description);
  co_return {};
}

std::string AutostartEntry::content() const {
  const KeyFile file(g_key_file_new());
  const auto set = [&file](const char* key, const std::string& value) {
    g_key_file_set_string(file.get(), group, key, value.c_str());
  };
  set(G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
  set(G_KEY_FILE_DESKTOP_KEY_NAME, options_.applicationName);
  set(G_KEY_FILE_DESKTOP_KEY_COMMENT, base::tr("Watch for new mail"));
  set(G_KEY_FILE_DESKTOP_KEY_EXEC, execLine(options_.command));
  // The package may be removed, which leaves this file behind.
  set(G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, options_.command.front());
  set(G_KEY_FILE_DESKTOP_KEY_ICON, options_.applicationId);
  return glib::CString(g_key_file_to_data(file.get(), nullptr, nullptr)).get();
}

} // namespace ondrel::platform::desktop
