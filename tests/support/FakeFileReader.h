#pragma once

#include "async/sleep.h"
#include "platform/FileReader.h"

namespace ondrel::support {

// Reads what a file store holds, a turn later.
class FakeFileReader final : public platform::FileReader {
 public:
  explicit FakeFileReader(platform::FileStore& files) : files_(files) {}

  async::Task<std::expected<std::string, platform::FileError>> read(std::string path,
                                                                    std::uint64_t limit) override {
    co_await async::nextTurn();
    auto content = files_.read(path);
    if (content && content->size() > limit)
      co_return std::unexpected(platform::FileError{false, "too large"});
    co_return std::move(content);
  }

 private:
  platform::FileStore& files_;
};

} // namespace ondrel::support
