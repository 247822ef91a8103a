#pragma once

#include "async/EventLoop.h"
#include "async/sleep.h"
#include "platform/Clipboard.h"
#include "platform/FileStore.h"
#include "platform/Panels.h"
#include "platform/UriLauncher.h"
#include "platform/UserDefaults.h"

#include <boost/json/object.hpp>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ondrel::support {

// Answers each question with what the test has set, a turn later.
class FakePanels final : public platform::Panels {
 public:
  async::Task<int> runAlert(platform::Alert alert, std::shared_ptr<platform::Window>) override {
    alerts.push_back(std::move(alert));
    co_await async::nextTurn();
    if (alertTakes > async::Duration{})
      co_await async::sleep(alertTakes);
    co_return alertAnswer;
  }
  async::Task<std::optional<std::string>> runSavePanel(platform::SavePanel panel,
                                                       std::shared_ptr<platform::Window> parent) override {
    savePanels.push_back(std::move(panel));
    savePanelParent = std::move(parent);
    co_await async::nextTurn();
    co_return savePath;
  }
  async::Task<std::optional<std::vector<std::string>>>
  runOpenPanel(platform::OpenPanel panel, std::shared_ptr<platform::Window>) override {
    openPanels.push_back(std::move(panel));
    co_await async::nextTurn();
    co_return openPaths;
  }

  std::vector<platform::Alert> alerts;
  std::vector<platform::SavePanel> savePanels;
  std::shared_ptr<platform::Window> savePanelParent; // of the last of them
  std::vector<platform::OpenPanel> openPanels;
  int alertAnswer = firstButton;
  async::Duration alertTakes{0}; // users think
  std::optional<std::string> savePath;
  std::optional<std::vector<std::string>> openPaths;
};

class FakeUriLauncher final : public platform::UriLauncher {
 public:
  void open(const std::string& url) override { opened.push_back(url); }
  std::optional<std::string> defaultApplicationForScheme(const std::string&) const override {
    return mailApplication;
  }
  async::Task<std::expected<void, std::string>> openFile(std::string path) override {
    return answer("open " + path);
  }
  async::Task<std::expected<void, std::string>> openFileWith(std::string path,
                                                             platform::NativeView) override {
    return answer("open with " + path);
  }
  async::Task<std::expected<void, std::string>> showFile(std::string path) override {
    return answer("show " + path);
  }

  std::vector<std::string> opened;
  std::vector<std::string> files; // "open <path>", "open with <path>" or "show <path>"
  std::expected<void, std::string> fileAnswer;
  std::optional<std::string> mailApplication;

 private:
  async::Task<std::expected<void, std::string>> answer(std::string call) {
    co_await async::nextTurn();
    files.push_back(std::move(call));
    co_return fileAnswer;
  }
};

class FakeClipboard final : public platform::Clipboard {
 public:
  async::Task<std::optional<std::string>> readString() override {
    co_await async::nextTurn();
    co_return text;
  }
  void writeString(const std::string& value) override { text = value; }

  std::optional<std::string> text;
};

class FakeDefaults final : public platform::UserDefaults {
 public:
  std::optional<bool> boolean(std::string_view key) const override {
    const auto* value = values.if_contains(key);
    return value && value->is_bool() ? std::optional(value->get_bool()) : std::nullopt;
  }
  std::optional<std::int64_t> integer(std::string_view key) const override {
    const auto* value = values.if_contains(key);
    return value && value->is_int64() ? std::optional(value->get_int64()) : std::nullopt;
  }
  std::optional<double> number(std::string_view key) const override {
    const auto* value = values.if_contains(key);
    return value && value->is_double() ? std::optional(value->get_double()) : std::nullopt;
  }
  std::optional<std::string> string(std::string_view key) const override {
    const auto* value = values.if_contains(key);
    return value && value->is_string() ? std::optional(std::string(value->get_string())) : std::nullopt;
  }
  void set(std::string_view key, bool value) override { store(key, value); }
  void set(std::string_view key, std::int64_t value) override { store(key, value); }
  void set(std::string_view key, double value) override { store(key, value); }
  void set(std::string_view key, std::string value) override { store(key, boost::json::string_view(value)); }
  void remove(std::string_view key) override {
    if (values.erase(key) > 0)
      changed.emit(std::string(key));
  }

  boost::json::object values;

 private:
  void store(std::string_view key, boost::json::value value) {
    auto& slot = values[key];
    if (slot == value)
      return;
    slot = std::move(value);
    changed.emit(std::string(key));
  }
};

// Files in memory. A path in `unreadable` exists and can't be read; `full` makes every write fail.
class FakeFiles final : public platform::FileStore, public platform::Directories {
 public:
  std::expected<std::string, platform::FileError> read(const std::string& path) override {
    if (unreadable == path)
      return std::unexpected(platform::FileError{false, "permission denied"});
    const auto found = files.find(path);
    if (found == files.end())
      return std::unexpected(platform::FileError{true, "no such file"});
    const auto content = found->second;
    if (afterRead)
      afterRead();
    return content;
  }
  std::expected<void, platform::FileError> writeAtomically(const std::string& path,
                                                           std::string_view content) override {
    ++writes;
    if (full)
      return std::unexpected(platform::FileError{false, "no space left on device"});
    files[path] = content;
    return {};
  }
  std::expected<void, platform::FileError> rewriteShared(const std::string& path,
                                                         std::string_view content) override {
    return writeAtomically(path, content);
  }
  std::expected<std::optional<std::string>, platform::FileError>
  replaceShared(const std::string& path, const MakeContent& make,
                std::optional<platform::FileVersion>& known) override {
    const auto there = version(path);
    std::optional<std::expected<std::string, platform::FileError>> other;
    if (there && there != known)
      other = read(path);
    const auto content = make(other ? &*other : nullptr);
    if (version(path) != there)
      return replaceShared(path, make, known);
    std::optional<std::string> kept;
    if (content.keepsOther && there && !full) {
      int number = 1;
      do
        kept = path + ".damaged-" + std::to_string(number++);
      while (files.contains(*kept));
      files[*kept] = files[path];
    }
    if (auto written = writeAtomically(path, content.text); !written)
      return std::unexpected(written.error());
    known = version(path);
    return kept;
  }
  // The same content counts as the same version.
  std::optional<platform::FileVersion> version(const std::string& path) override {
    const auto found = files.find(path);
    if (found == files.end())
      return std::nullopt;
    return platform::FileVersion{.inode = std::hash<std::string>()(found->second)};
  }
  std::vector<std::string> keptAside(const std::string& path) override {
    std::vector<std::string> kept;
    for (const auto& [name, content] : files)
      if (name.starts_with(path + ".damaged-") || name.starts_with(path + ".other-"))
        kept.push_back(name);
    return kept;
  }
  bool exists(const std::string& path) override { return files.contains(path); }
  std::expected<void, platform::FileError> removeRecursively(const std::string& path) override {
    std::erase_if(files, [&](const auto& file) { return file.first.starts_with(path); });
    return {};
  }

  std::optional<std::string> applicationSupport() const override { return support; }
  std::optional<std::string> documents() const override { return "/documents"; }
  std::optional<std::string> downloads() const override { return downloadsFolder; }
  std::string temporary() const override { return "/tmp"; }
  std::string home() const override { return "/home"; }

  std::map<std::string, std::string> files;
  std::optional<std::string> support = "/data";
  std::optional<std::string> downloadsFolder = "/downloads";
  std::string unreadable;
  std::function<void()> afterRead;
  bool full = false;
  int writes = 0;
};

} // namespace ondrel::support
