#pragma once

#include "async/sleep.h"
#include "platform/UserFolders.h"
#include "support/FakeDesktop.h"

namespace ondrel::support {

// Lists what a file store holds. As with the real one, a cancelled listing is an error.
struct FakeUserFolders final : platform::UserFolders {
  explicit FakeUserFolders(FakeFiles& store) : files(store) {}
  async::Task<std::expected<std::vector<std::string>, platform::FileError>> names(std::string path) override {
    std::vector<std::string> names;
    for (const auto& [file, content] : files.files)
      if (file.starts_with(path + "/"))
        names.insert(names.begin(), file.substr(path.size() + 1)); // the order is nobody's
    const bool slept = co_await async::sleep(delay);
    if (!slept || names.empty())
      co_return std::unexpected(platform::FileError{true, "no such folder"});
    co_return names;
  }
  base::Subscription watch(const std::string&, std::function<void()>) override { return {}; }

  FakeFiles& files;
  async::Duration delay{};
};

} // namespace ondrel::support
