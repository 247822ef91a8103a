#include "highlights/HighlightExport.h"

#include "async/Scope.h"
#include "base/Base64.h"
#include "base/Translation.h"
#include "highlights/file/HighlightStore.h"
#include "platform/Application.h"
#include "platform/FileStore.h"
#include "platform/Panels.h"
#include "platform/TextFormatting.h"
#include "settings/AppSettings.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ranges>

namespace ondrel::highlights {

HighlightExport::HighlightExport(Services services) : services_(std::move(services)) {
}

std::vector<ExportedHighlight> HighlightExport::newestFirst() const {
  std::vector<ExportedHighlight> sorted;
  for (auto& [messageId, highlight] : services_.store.allHighlights())
    sorted.push_back({std::move(messageId), std::move(highlight)});
  std::ranges::sort(sorted, std::greater<>(), [](const auto& each) { return each.highlight.createdAt; });
  return sorted;
}

std::optional<std::string> HighlightExport::iconURL() const {
  const auto& png = services_.iconPNG;
  if (png.empty())
    return std::nullopt;
  return "data:image/png;base64," +
         base::base64Encoded({reinterpret_cast<const std::uint8_t*>(png.data()), png.size()});
}

async::Task<std::string> HighlightExport::generateHighlightsHTML(bool forFile) {
  co_return co_await generate(forFile, [](const TransferProgress&) {});
}

async::Task<MessageLookup> HighlightExport::lookUp(std::set<std::string> messageIds,
                                                   std::function<void(const TransferProgress&)> asked) {
  std::vector<std::string> ids(messageIds.begin(), messageIds.end());
  const auto total = ids.size();
  asked({TransferProgress::Step::asking, 0, total});
  auto answer =
      co_await services_.mail.highlightExportInfo(std::move(ids), [&asked, total](std::size_t done) {
        asked({TransferProgress::Step::asking, done, total});
      });
  MessageLookup result;
  const bool isSignedOut = !answer && answer.error().kind == jmap::JMAPError::Kind::notAuthenticated;
  if (!answer || !answer->unanswered.empty())
    result.problem = isSignedOut ? base::tr("Nobody is signed in, so messages could not be looked up.")
                                 : base::tr("The mail server can't be reached.");
  if (!answer)
    co_return result;
  result.found = std::move(answer->found);
  for (const auto& [messageId, highlight] : newestFirst()) {
    if (!messageIds.contains(messageId) || result.found.contains(messageId) ||
        answer->unanswered.contains(messageId))
      continue;
    logger_.error("generateHighlightsHTML: could not resolve messageId {} — skipped",
                  base::Private{messageId});
    result.missing.insert(messageId);
  }
  co_return result;
}

HighlightDocument HighlightExport::document(const MessageLookup& messages, bool forFile) const {
  const auto sorted = newestFirst();
  HighlightDocument document;
  for (const auto& [messageId, highlight] : sorted) {
    if (messages.missing.contains(messageId))
      continue;
    const auto info = messages.found.find(messageId);
    const bool isKnown = info != messages.found.end();
    if (!isKnown)
      document.problem = messages.problem;
    const auto quote =
        highlight.quote.value_or(HighlightQuote{highlight.prefix, highlight.exact, highlight.suffix});
    document.entries.push_back({.id = highlight.id,
                                .url = isKnown ? info->second.url : "",
                                .subject = isKnown ? info->second.subject : "",
                                .prefix = quote.prefix,
                                .exact = quote.exact,
                                .suffix = quote.suffix});
  }
  document.date = services_.textFormatting.mediumDateShortTime(
      std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()));
  document.iconURL = iconURL();
  document.projectSiteURL = services_.settings.site().projectSiteURL;
  document.payload = encodedPayload(sorted);
  document.forFile = forFile;
  return document;
}

async::Task<std::string> HighlightExport::generate(bool forFile,
                                                   std::function<void(const TransferProgress&)> asked) {
  const auto ids = std::views::keys(services_.store.byMessageId());
  const auto messages = co_await lookUp({ids.begin(), ids.end()}, std::move(asked));
  co_return document(messages, forFile).html();
}

async::Task<void> HighlightExport::generateInto(std::shared_ptr<Page> page) {
  page->resolve(
      co_await generate(true, [this](const TransferProgress& progress) { progress_.set(progress); }));
}

async::Task<std::optional<std::string>> HighlightExport::generateForFile() {
  auto [resolver, future] = async::makeFuture<std::optional<std::string>>();
  auto page = std::make_shared<Page>(std::move(resolver));
  const auto stopping = stopped_.subscribe([weak = std::weak_ptr(page)] {
    if (const auto waiting = weak.lock())
      waiting->resolve(std::nullopt);
  });
  ++underWay_;
  std::optional<std::string> html;
  {
    async::Scope work; // ends what is still being asked when the user has stopped it
    work.spawn(generateInto(std::move(page)));
    html = (co_await std::move(future)).value_or(std::nullopt);
  }
  if (--underWay_ == 0)
    progress_.set(std::nullopt);
  co_return html;
}

async::Task<void> HighlightExport::exportHighlights() {
  const auto before = services_.application.focusedWindow();
  const auto html = co_await generateForFile();
  if (!html)
    co_return;
  auto window = services_.application.focusedWindow();
  // The keyboard may be with the window that shows the progress, or by now in another program.
  if (!window && std::ranges::count(services_.application.windows(), before) > 0)
    window = before;
  if (!window)
    co_return;
  const auto path = co_await services_.panels.runSavePanel(
      {.proposedName = std::string(base::tr("Ondrel Highlights")) + ".html", .mimeTypes = {"text/html"}},
      window);
  if (!path)
    co_return;
  // A file that is replaced keeps its place behind a link, and whom it was readable for.
  const auto written = services_.files.rewriteShared(*path, *html);
  if (written)
    co_return;
  logger_.error("exportHighlights: write failed: {}", written.error().description);
  co_await services_.panels.runAlert(
      {.messageText = base::tr("Couldn't Save File"), .informativeText = written.error().description},
      window);
}

} // namespace ondrel::highlights
