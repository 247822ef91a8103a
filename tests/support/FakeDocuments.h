#pragma once

#include "async/sleep.h"
#include "platform/NewFile.h"
#include "platform/documents/ContentTypes.h"
#include "platform/documents/DocumentPrinter.h"
#include "support/FakeDesktop.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::support {

// Knows a few types, the one of scalable graphics as text too.
class FakeContentTypes final : public platform::ContentTypes {
 public:
  bool conforms(std::string_view type, platform::ContentKind kind) const override {
    using enum platform::ContentKind;
    return (kind == image && type.starts_with("image/")) || (kind == pdf && type == "application/pdf") ||
           (kind == text && (type == "text/plain" || type == "image/svg+xml"));
  }
};

class FakePrinter final : public platform::DocumentPrinter {
 public:
  async::Task<std::optional<std::string>> print(std::string data, platform::DocumentKind, std::string jobName,
                                                std::shared_ptr<platform::Window>) override {
    jobs.push_back(jobName + ": " + data);
    co_return std::nullopt;
  }

  std::vector<std::string> jobs;
};

// Puts finished files into a file store, each call a turn later.
class FakeNewFiles final : public platform::NewFiles {
 public:
  explicit FakeNewFiles(FakeFiles& files) : files_(files) {}

  async::Task<std::expected<std::unique_ptr<platform::NewFile>, std::string>>
  create(std::string path, Existing existing) override {
    co_await async::nextTurn();
    if (existing == Existing::stays && files_.exists(path))
      co_return std::unexpected("It exists.");
    co_return std::make_unique<File>(files_, alive, std::move(path));
  }

  std::shared_ptr<int> alive = std::make_shared<int>(); // has an owner more for each file that isn't finished

 private:
  struct File final : platform::NewFile {
    File(FakeFiles& store, std::shared_ptr<int> alive, std::string place)
        : files(store), isAlive(std::move(alive)), path(std::move(place)) {}
    async::Task<std::expected<void, std::string>> write(std::string bytes) override {
      co_await async::nextTurn();
      content += bytes;
      co_return files.full ? std::unexpected("The disk is full.") : std::expected<void, std::string>();
    }
    async::Task<std::expected<void, std::string>> finish() override {
      co_await async::nextTurn();
      files.files[path] = content;
      co_return std::expected<void, std::string>();
    }

    FakeFiles& files;
    std::shared_ptr<int> isAlive;
    std::string path;
    std::string content;
  };

  FakeFiles& files_;
};

} // namespace ondrel::support
