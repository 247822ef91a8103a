#pragma once

#include "async/sleep.h"
#include "platform/NewFile.h"
#include "support/FakeDesktop.h"

#include <memory>
#include <string>
#include <utility>

namespace ondrel::support {

// Puts finished files into a file store, each call a turn later, or longer where the disk is slow.
class FakeNewFiles final : public platform::NewFiles {
 public:
  explicit FakeNewFiles(FakeFiles& files) : files_(files) {}

  async::Task<std::expected<std::unique_ptr<platform::NewFile>, std::string>>
  create(std::string path, Existing existing) override {
    co_await async::nextTurn();
    if (existing == Existing::stays && files_.exists(path))
      co_return std::unexpected("It exists.");
    co_return std::make_unique<File>(files_, alive, delay, std::move(path));
  }

  async::Duration delay{0};                             // of the end
  std::shared_ptr<int> alive = std::make_shared<int>(); // has an owner more for each file that isn't finished

 private:
  struct File final : platform::NewFile {
    File(FakeFiles& store, std::shared_ptr<int> alive, async::Duration delay, std::string place)
        : files(store), isAlive(std::move(alive)), ending(delay), path(std::move(place)) {}
    async::Task<std::expected<void, std::string>> write(std::string bytes) override {
      co_await async::nextTurn();
      content += bytes;
      co_return files.full ? std::unexpected("The disk is full.") : std::expected<void, std::string>();
    }
    async::Task<std::expected<void, std::string>> finish() override {
      (void)co_await async::sleep(ending);
      files.files[path] = content;
      co_return std::expected<void, std::string>();
    }

    FakeFiles& files;
    std::shared_ptr<int> isAlive;
    async::Duration ending;
    std::string path;
    std::string content;
  };

  FakeFiles& files_;
};

} // namespace ondrel::support
