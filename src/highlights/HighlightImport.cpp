// The work is cut into pieces of a few milliseconds, between which windows and pages have their turns.
#include "highlights/HighlightImport.h"

#include "async/EventLoop.h"
#include "async/sleep.h"
#include "base/Text.h"
#include "highlights/HighlightStore.h"
#include "platform/Application.h"
#include "platform/FileReader.h"
#include "platform/Panels.h"

#include <algorithm>
#include <string_view>

namespace ondrel::highlights {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t largestFile = std::uint64_t{256} << 20;

constexpr std::string_view nothingToImport =
    "This file doesn't contain any Ondrel highlight data. If it's an older export, re-export it with the "
    "current version of Ondrel first.";

// Tells when a piece of work has taken long enough for others to have their turn.
class Slice {
 public:
  bool isOver() const { return async::EventLoop::current().now() - began_ >= 8ms; }
  void begin() { began_ = async::EventLoop::current().now(); }
  // A pause and not just a turn: windows are drawn only while nothing else is to be done.
  static constexpr auto pause = 1ms;

 private:
  async::TimePoint began_ = async::EventLoop::current().now();
};

// The first bytes, cut between characters.
std::string_view piece(std::string_view text) {
  constexpr std::size_t length = std::size_t{1} << 20;
  constexpr std::size_t longestCharacter = 4;
  auto end = std::min(length, text.size());
  if (end < text.size())
    for (std::size_t i = 0; i < longestCharacter && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80;
         ++i)
      --end;
  return text.substr(0, end);
}

std::string report(std::size_t imported, std::size_t skipped) {
  auto text = "Imported " + std::to_string(imported) + (imported == 1 ? " highlight" : " highlights");
  if (skipped > 0)
    text += ", skipped " + std::to_string(skipped) + " already saved";
  return text + ".";
}

} // namespace

HighlightImport::HighlightImport(Services services) : services_(std::move(services)) {
}

async::Task<void> HighlightImport::importHighlights() {
  const auto window = services_.application.keyWindow();
  if (!window)
    co_return;
  const auto paths = co_await services_.panels.runOpenPanel({.mimeTypes = {"text/html"}}, window);
  if (!paths || paths->empty())
    co_return;
  while (progress_->has_value()) {
    const bool slept = co_await async::sleep(50ms);
    if (!slept)
      co_return;
  }
  const auto& path = paths->front();
  stopRequested_ = false;
  progress_.set(TransferProgress{});
  auto result = co_await importFile(path);
  if (result && result->imported > 0)
    co_await show(std::move(result->threadIds));
  progress_.set(std::nullopt);

  if (!result) {
    if (!result.error().title.empty())
      co_await services_.panels.runAlert(
          {.messageText = result.error().title, .informativeText = result.error().text}, window);
    co_return;
  }
  logger_.info("importHighlights: imported {}, skipped {} from {}", result->imported, result->skipped, path);
  co_await services_.panels.runAlert(
      {.messageText = "Highlights Imported", .informativeText = report(result->imported, result->skipped)},
      window);
}

async::Task<std::expected<HighlightImport::Merged, HighlightImport::ImportProblem>>
HighlightImport::importFile(std::string path) {
  auto highlights = co_await readHighlights(std::move(path));
  if (!highlights)
    co_return std::unexpected(std::move(highlights.error()));
  auto merged = co_await merge(std::move(*highlights));
  co_return std::move(merged);
}

async::Task<std::expected<HighlightImport::Highlights, HighlightImport::ImportProblem>>
HighlightImport::readHighlights(std::string path) {
  const auto text = co_await readText(path);
  if (stopRequested_)
    co_return std::unexpected(ImportProblem{});
  if (!text) {
    logger_.error("importHighlights: could not read file at {}", path);
    co_return std::unexpected(ImportProblem{"Couldn't Read File", "Ondrel couldn't open that file."});
  }
  const auto payload = findPayload(*text);
  auto state = PayloadDecoder::State::notBase64;
  PayloadDecoder decoder(payload.value_or(std::string_view()));
  if (payload)
    state = co_await decode(decoder);
  switch (state) {
  case PayloadDecoder::State::working:
    break;
  case PayloadDecoder::State::done:
    co_return decoder.take();
  case PayloadDecoder::State::notBase64:
    logger_.error("importHighlights: no highlight data payload found in {}", path);
    co_return std::unexpected(ImportProblem{"Nothing to Import", std::string(nothingToImport)});
  case PayloadDecoder::State::corrupted:
    logger_.error("importHighlights: found a payload but couldn't decode it in {}", path);
    co_return std::unexpected(
        ImportProblem{"Couldn't Read Highlights", "This file's highlight data appears to be corrupted."});
  }
  co_return std::unexpected(ImportProblem{});
}

async::Task<std::optional<std::string>> HighlightImport::readText(std::string path) {
  auto text = co_await services_.reader.read(path, largestFile);
  if (!text) {
    logger_.notice("importHighlights: {}", text.error().description);
    co_return std::nullopt;
  }
  Slice slice;
  for (std::string_view left = *text; !left.empty();) {
    const auto part = piece(left);
    if (part.empty() || !base::isValidUtf8(part))
      co_return std::nullopt;
    left.remove_prefix(part.size());
    if (slice.isOver()) {
      const bool goOn = co_await async::sleep(Slice::pause);
      if (!goOn || stopRequested_)
        break;
      slice.begin();
    }
  }
  co_return std::move(*text);
}

async::Task<PayloadDecoder::State> HighlightImport::decode(PayloadDecoder& decoder) {
  Slice slice;
  while (decoder.step() == PayloadDecoder::State::working && !stopRequested_) {
    if (!slice.isOver())
      continue;
    const bool goOn = co_await async::sleep(Slice::pause);
    if (!goOn)
      break;
    slice.begin();
  }
  co_return stopRequested_ ? PayloadDecoder::State::working : decoder.step();
}

bool HighlightImport::isKnown(const ExportedHighlight& exported) const {
  return std::ranges::any_of(services_.store.highlights(exported.messageId),
                             [&](const auto& highlight) { return highlight.id == exported.highlight.id; });
}

async::Task<HighlightImport::Merged> HighlightImport::merge(Highlights highlights) {
  Merged merged;
  Slice slice;
  progress_.set(TransferProgress{TransferProgress::Step::adding, 0, highlights.size()});
  for (auto& each : highlights) {
    if (stopRequested_)
      break;
    if (isKnown(each)) {
      ++merged.skipped;
    } else {
      merged.threadIds.insert(each.highlight.threadId);
      services_.store.add(std::move(each.highlight), each.messageId);
      ++merged.imported;
    }
    if (!slice.isOver())
      continue;
    progress_.set(TransferProgress{TransferProgress::Step::adding, merged.imported + merged.skipped,
                                   highlights.size()});
    const bool goOn = co_await async::sleep(Slice::pause);
    if (!goOn)
      break;
    slice.begin();
  }
  co_return merged;
}

// Where others can see it: in the lists of all tabs, and on the server.
async::Task<void> HighlightImport::show(std::set<std::string> threadIds) {
  co_await services_.pushMailboxMarks();
  stopRequested_ = false; // an import that was stopped has its labels all the same
  const auto total = threadIds.size();
  co_await services_.syncTags(std::move(threadIds), [this, total](std::size_t done) {
    progress_.set(TransferProgress{TransferProgress::Step::labelling, done, total});
    return !stopRequested_;
  });
}

} // namespace ondrel::highlights
