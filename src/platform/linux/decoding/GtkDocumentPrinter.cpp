#include "platform/linux/decoding/GtkDocumentPrinter.h"

#include "async/Future.h"
#include "base/Log.h"
#include "base/Translation.h"
#include "platform/linux/decoding/PrintJob.h"
#include "platform/linux/windows/TabWindow.h"

namespace ondrel::platform::decoding {

namespace {

constexpr base::Logger logger("ui");

using Outcome = std::optional<std::string>;

async::Task<Outcome> printDocument(async::Task<DecodeResult<std::unique_ptr<DecodedDocument>>> opening,
                                   PrintJob::Options options, std::shared_ptr<Window> parent) {
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

async::Task<void> answer(async::Resolver<Outcome> asker, async::Task<Outcome> printing) {
  auto outcome = co_await std::move(printing);
  asker.resolve(std::move(outcome));
}

async::Task<Outcome> outcomeOf(async::Future<Outcome> future) {
  auto outcome = co_await std::move(future);
  co_return std::move(outcome).value_or(std::nullopt);
}

} // namespace

async::Task<std::optional<std::string>> GtkDocumentPrinter::print(std::string path, DocumentKind kind,
                                                                  std::string jobName,
                                                                  std::shared_ptr<Window> parent) {
  auto [resolver, future] = async::makeFuture<Outcome>();
  scope_.spawn(
      answer(std::move(resolver), printDocument(decoder_.open(std::move(path), kind),
                                                {kind, std::move(jobName), exportPath_}, std::move(parent))));
  return outcomeOf(std::move(future));
}

} // namespace ondrel::platform::decoding
