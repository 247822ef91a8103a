// The work is cut into pieces of a few milliseconds, between which windows and pages have their turns.
#include "highlights/HighlightImport.h"

#include "async/EventLoop.h"
#include "async/sleep.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "highlights/file/HighlightSalvage.h"
#include "highlights/file/HighlightStore.h"
#include "platform/Application.h"
#include "platform/FileReader.h"
#include "platform/Panels.h"

#include <algorithm>
#include <string_view>

namespace ondrel::highlights {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t largestFile = std::uint64_t{256} << 20;

constexpr const char* nothingToImport = base::trMark(
    "This file doesn't contain any Ondrel highlight data. If it's an older export, re-export it with the "
    "current version of Ondrel first.");

constexpr const char* corrupted = base::trMark("This file's highlight data appears to be corrupted.");

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

constexpr std::size_t pieceLength = std::size_t{1} << 20; // bytes

// The sentence without its end.
std::string importedInWords(std::size_t imported, std::size_t skipped, bool areSaved) {
  if (skipped == 0)
    // TRANSLATORS: the end of the sentence follows: a full stop, or that some could not be saved
    return base::trPlural("Imported {} highlight", "Imported {} highlights", imported, imported);
  const auto highlights = base::trPlural("{} highlight", "{} highlights", imported, imported);
  // TRANSLATORS: {0} is "7 highlights", {1} a number. The end of the sentence follows.
  return areSaved ? base::trFormat("Imported {0}, skipped {1} already saved", highlights, skipped)
                  // TRANSLATORS: {0} is "7 highlights", {1} a number. That some could not be saved follows.
                  : base::trFormat("Imported {0}, skipped {1} already there", highlights, skipped);
}

} // namespace

HighlightImport::HighlightImport(Services services) : services_(std::move(services)) {
}

async::Task<void> HighlightImport::importHighlights() {
  const auto window = services_.application.focusedWindow();
  if (!window)
    co_return;
  const auto paths = co_await services_.panels.runOpenPanel({.mimeTypes = {"text/html"}}, window);
  if (!paths || paths->empty())
    co_return;
  co_await importFile(std::move(paths->front()), window);
}

async::Task<bool> HighlightImport::importFile(std::string path) {
  return importFile(std::move(path), services_.application.frontWindow());
}

async::Task<bool> HighlightImport::importFile(std::string path, std::shared_ptr<platform::Window> window) {
  while (progress_->has_value()) {
    const bool slept = co_await async::sleep(50ms);
    if (!slept)
      co_return false;
  }
  stopRequested_ = false;
  progress_.set(TransferProgress{});
  auto result = co_await mergeFile(path);
  if (result && result->imported > 0)
    co_await show(std::move(result->threadIds));
  progress_.set(std::nullopt);

  if (!result) {
    if (result.error().title.empty())
      co_return false;
    co_await services_.panels.runAlert(
        {.messageText = result.error().title, .informativeText = result.error().text}, window);
    co_return true;
  }
  logger_.info("importHighlights: imported {}, skipped {} from {}", result->imported, result->skipped, path);
  co_await services_.panels.runAlert(report(*result), window);
  co_return true;
}

platform::Alert HighlightImport::report(const Merged& merged) const {
  // What could not be saved at first may be by now.
  const auto& problem = *services_.store.file().problem();
  const auto unsaved =
      problem ? std::ranges::count_if(
                    merged.all,
                    [this](const auto& each) { return services_.store.isUnsaved(each.first, each.second); })
              : 0;
  const auto imported = importedInWords(merged.imported, merged.skipped, unsaved == 0);
  const auto total = merged.imported + merged.skipped;
  std::string text;
  if (unsaved == 0)
    text = imported + ".";
  else if (std::cmp_less(unsaved, total))
    // TRANSLATORS: {0} is "Imported 7 highlights", {1} a number, {2} the reason
    text = base::trFormat("{0}, but {1} of them could not be saved: {2}. Ondrel goes on trying.", imported,
                          unsaved, *problem);
  else
    // TRANSLATORS: {0} is "Imported 7 highlights", {1} the reason
    text = base::trPlural("{0}, but it could not be saved: {1}. Ondrel goes on trying.",
                          "{0}, but they could not be saved: {1}. Ondrel goes on trying.", total, imported,
                          *problem);
  if (merged.isDamaged)
    text += std::string(" ") + base::tr("The file is damaged, and holds more that could not be read.");
  return {.messageText = base::tr("Highlights Imported"),
          .informativeText = std::move(text),
          .style = unsaved > 0 ? platform::AlertStyle::warning : platform::AlertStyle::informational};
}

async::Task<std::expected<HighlightImport::Merged, HighlightImport::ImportProblem>>
HighlightImport::mergeFile(std::string path) {
  auto read = co_await readHighlights(std::move(path));
  if (!read)
    co_return std::unexpected(std::move(read.error()));
  auto merged = co_await merge(std::move(*read));
  co_return std::move(merged);
}

async::Task<std::expected<HighlightImport::Read, HighlightImport::ImportProblem>>
HighlightImport::readHighlights(std::string path) {
  const auto text = co_await readText(path);
  if (stopRequested_)
    co_return std::unexpected(ImportProblem{});
  if (!text) {
    logger_.error("importHighlights: could not read file at {}", path);
    co_return std::unexpected(
        ImportProblem{base::tr("Couldn't Read File"), base::tr("Ondrel couldn't open that file.")});
  }
  if (HighlightSalvage::looksLikeFile(*text))
    co_return co_await decodeStoreFile(*text, std::move(path));
  co_return co_await decodeExport(*text, std::move(path));
}

async::Task<std::expected<HighlightImport::Read, HighlightImport::ImportProblem>>
HighlightImport::decodeExport(const std::string& text, std::string path) {
  const auto payload = findPayload(text);
  PayloadDecoder decoder(payload.value_or(std::string_view()));
  const bool isRead =
      co_await inSlices([&decoder] { return decoder.step() == PayloadDecoder::State::working; });
  if (!isRead)
    co_return std::unexpected(ImportProblem{});
  if (!payload || decoder.step() == PayloadDecoder::State::notBase64) {
    logger_.error("importHighlights: no highlight data payload found in {}", path);
    co_return std::unexpected(ImportProblem{base::tr("Nothing to Import"), base::tr(nothingToImport)});
  }
  if (decoder.step() == PayloadDecoder::State::corrupted) {
    logger_.error("importHighlights: found a payload but couldn't decode it in {}", path);
    co_return std::unexpected(ImportProblem{base::tr("Couldn't Read Highlights"), base::tr(corrupted)});
  }
  co_return Read{decoder.take()};
}

async::Task<std::expected<HighlightImport::Read, HighlightImport::ImportProblem>>
HighlightImport::decodeStoreFile(const std::string& text, std::string path) {
  HighlightSalvage salvage(text);
  const bool isRead = co_await inSlices([&salvage] { return salvage.step(); });
  if (!isRead)
    co_return std::unexpected(ImportProblem{});
  Read read{salvage.take(), salvage.isDamaged()};
  if (!read.highlights.empty())
    co_return std::move(read);
  logger_.error("importHighlights: no highlights found in {}", path);
  co_return std::unexpected(read.isDamaged
                                ? ImportProblem{base::tr("Couldn't Read Highlights"), base::tr(corrupted)}
                                : ImportProblem{base::tr("Nothing to Import"), base::tr(nothingToImport)});
}

async::Task<std::optional<std::string>> HighlightImport::readText(std::string path) {
  auto text = co_await services_.reader.read(path, largestFile);
  if (!text) {
    logger_.notice("importHighlights: {}", text.error().description);
    co_return std::nullopt;
  }
  std::string_view left = *text;
  // What is no text in a damaged file costs its own record only.
  if (HighlightSalvage::looksLikeFile(left))
    left = {};
  bool isText = true;
  co_await inSlices([&left, &isText] {
    const auto part = base::cutAtCharacter(left, pieceLength);
    isText = left.empty() || (!part.empty() && base::isValidUtf8(part));
    left.remove_prefix(part.size());
    return isText && !left.empty();
  });
  co_return isText ? std::optional(std::move(*text)) : std::nullopt;
}

async::Task<bool> HighlightImport::inSlices(std::function<bool()> step) {
  Slice slice;
  while (!stopRequested_ && step()) {
    if (!slice.isOver())
      continue;
    const bool goOn = co_await async::sleep(Slice::pause);
    if (!goOn)
      co_return false;
    slice.begin();
  }
  co_return !stopRequested_;
}

async::Task<HighlightImport::Merged> HighlightImport::merge(Read read) {
  Merged merged;
  merged.isDamaged = read.isDamaged;
  auto& highlights = read.highlights;
  std::size_t done = 0;
  progress_.set(TransferProgress{TransferProgress::Step::adding, 0, highlights.size()});
  while (done < highlights.size() && !stopRequested_) {
    const Slice slice;
    {
      // The whole file is written anew with each save.
      const HighlightStore::Batch batch(services_.store);
      do
        add(std::move(highlights[done++]), merged);
      while (done < highlights.size() && !stopRequested_ && !slice.isOver());
    }
    progress_.set(TransferProgress{TransferProgress::Step::adding, done, highlights.size()});
    const bool goOn = co_await async::sleep(Slice::pause);
    if (!goOn)
      break;
  }
  co_return merged;
}

void HighlightImport::add(ExportedHighlight exported, Merged& merged) {
  auto& [messageId, highlight] = exported;
  merged.all.emplace_back(highlight.id, messageId);
  const auto& known = services_.store.highlights(messageId);
  if (std::ranges::find(known, highlight.id, &PersistedHighlight::id) != known.end()) {
    ++merged.skipped;
    return;
  }
  merged.threadIds.insert(highlight.threadId);
  services_.store.add(std::move(highlight), messageId);
  ++merged.imported;
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
