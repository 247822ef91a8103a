#include "attachments/FileTransfer.h"

#include "base/Log.h"
#include "base/Translation.h"
#include "platform/HttpClient.h"

#include <chrono>

namespace ondrel::attachments {

namespace {

constexpr std::chrono::seconds longestSilence{60};

} // namespace

async::Task<Result<void>> fetchToFile(platform::HttpClient& http, platform::NewFiles& newFiles,
                                      Transfer transfer, TransferFollower follower) {
  const base::Logger logger("network");
  const auto stream = co_await http.open(
      {.url = std::move(transfer.url), .timeout = longestSilence, .bodyTimeout = longestSilence});
  if (!stream)
    co_return std::unexpected(AttachmentError::told(stream.error().inWords()));
  const int status = (*stream)->status();
  logger.debug("AttachmentDownloader: fetch returned status {}", status);
  if (status < 200 || status > 299)
    co_return std::unexpected(AttachmentError::httpError(status));

  auto file = co_await newFiles.create(std::move(transfer.path), transfer.existing);
  if (!file)
    co_return std::unexpected(AttachmentError::told(file.error()));
  const auto total = (*stream)->length().value_or(-1);
  std::int64_t written = 0;
  while (true) {
    auto bytes = co_await (*stream)->read();
    if (!bytes)
      co_return std::unexpected(AttachmentError::told(bytes.error().inWords()));
    if (bytes->empty())
      break;
    written += static_cast<std::int64_t>(bytes->size());
    const auto taken = co_await (*file)->write(std::move(*bytes));
    if (!taken)
      co_return std::unexpected(AttachmentError::told(taken.error()));
    follower.progressed(written, total);
  }
  if (total < 0 && written < transfer.size)
    co_return std::unexpected(
        AttachmentError::told(base::tr("The connection broke off before the end of the file. Try again.")));
  follower.arrived();
  const auto finished = co_await (*file)->finish();
  if (!finished)
    co_return std::unexpected(AttachmentError::told(finished.error()));
  co_return Result<void>();
}

} // namespace ondrel::attachments
