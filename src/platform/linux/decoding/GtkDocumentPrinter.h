#pragma once

#include "async/Scope.h"
#include "platform/documents/DocumentPrinter.h"
#include "platform/linux/decoding/ChildDecoder.h"

namespace ondrel::platform::decoding {

// Prints through the toolkit, which asks the desktop's portal in a sandbox.
class GtkDocumentPrinter final : public DocumentPrinter {
 public:
  // The decoder outlives it; jobs that are under way when it goes are cancelled. With `exportPath` no dialog
  // is shown, and the job becomes a PDF file there.
  explicit GtkDocumentPrinter(ChildDecoder& decoder, std::string exportPath = "")
      : decoder_(decoder), exportPath_(std::move(exportPath)) {}

  async::Task<std::optional<std::string>> print(std::string path, DocumentKind kind, std::string jobName,
                                                std::shared_ptr<Window> parent) override;

 private:
  ChildDecoder& decoder_;
  const std::string exportPath_;
  async::Scope scope_; // of the jobs, which outlive the windows that ask for them
};

} // namespace ondrel::platform::decoding
