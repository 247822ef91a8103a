#pragma once

#include "platform/documents/DocumentPrinter.h"
#include "platform/linux/decoding/ChildDecoder.h"

namespace ondrel::platform::decoding {

// Prints through the toolkit, which asks the desktop's portal in a sandbox.
class GtkDocumentPrinter final : public DocumentPrinter {
 public:
  // The decoder outlives it. With `exportPath` no dialog is shown, and the job becomes a PDF file there.
  explicit GtkDocumentPrinter(ChildDecoder& decoder, std::string exportPath = "")
      : decoder_(decoder), exportPath_(std::move(exportPath)) {}

  async::Task<std::optional<std::string>> print(std::string data, DocumentKind kind, std::string jobName,
                                                std::shared_ptr<Window> parent) override;

 private:
  ChildDecoder& decoder_;
  const std::string exportPath_;
};

} // namespace ondrel::platform::decoding
