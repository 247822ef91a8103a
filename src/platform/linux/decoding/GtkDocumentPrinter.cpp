#include "platform/linux/decoding/GtkDocumentPrinter.h"

#include "base/Log.h"
#include "base/Translation.h"
#include "platform/linux/decoding/PrintJob.h"
#include "platform/linux/windows/TabWindow.h"

namespace ondrel::platform::decoding {

namespace {

constexpr base::Logger logger("ui");

async::Task<std::optional<std::string>>
printDocument(async::Task<DecodeResult<std::unique_ptr<DecodedDocument>>> opening, PrintJob::Options options,
              std::shared_ptr<Window> parent) {
  auto document = co_await std::move(opening);
  if (!document) {
    logger.error("Can't print: {}", document.error().description);
    co_return base::tr("The file can't be printed. It may be damaged.");
  }
  auto* topLevel = windows::topLevelOf(parent);
  if (!topLevel && options.exportPath.empty())
    co_return base::tr("There is no window to print from. Open one and try again.");
  PrintJob job(std::move(*document), options);
  auto failure = co_await job.run(topLevel);
  co_return failure;
}

} // namespace

async::Task<std::optional<std::string>> GtkDocumentPrinter::print(std::string data, DocumentKind kind,
                                                                  std::string jobName,
                                                                  std::shared_ptr<Window> parent) {
  return printDocument(decoder_.openData(std::move(data), kind), {kind, std::move(jobName), exportPath_},
                       std::move(parent));
}

} // namespace ondrel::platform::decoding
