#pragma once

#include "async/sleep.h"
#include "platform/FileWriter.h"

namespace ondrel::support {

// Writes into a file store, some time later, as a thread does.
class FakeFileWriter final : public platform::FileWriter {
 public:
  explicit FakeFileWriter(platform::FileStore& files) : files_(files) {}

  async::Task<std::expected<void, platform::FileError>> writeAtomically(std::string path,
                                                                        std::string content) override {
    (void)co_await async::sleep(delay);
    co_return files_.writeAtomically(path, content);
  }

  async::Duration delay{0};

 private:
  platform::FileStore& files_;
};

} // namespace ondrel::support
