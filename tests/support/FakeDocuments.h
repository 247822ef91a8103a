#pragma once

#include "async/sleep.h"
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
  async::Task<std::optional<std::string>> print(std::string path, platform::DocumentKind, std::string jobName,
                                                std::shared_ptr<platform::Window>) override {
    jobs.push_back(jobName + ": " + path);
    co_return std::nullopt;
  }

  std::vector<std::string> jobs;
};

} // namespace ondrel::support
