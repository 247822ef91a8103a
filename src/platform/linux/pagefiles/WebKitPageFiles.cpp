#include "platform/linux/pagefiles/WebKitPageFiles.h"

#include "base/Translation.h"

namespace ondrel::platform::pagefiles {

namespace {
constexpr const char* noAnswer = base::trMark("This page doesn't respond. Nothing was added.");
}

WebKitPageFiles::WebKitPageFiles(WebKitWebView* view, GtkWidget* container,
                                 std::function<void(const std::string&)> tell)
    : tell_(std::move(tell)), handover_(view),
      drop_(GTK_WIDGET(view), container, handover_,
            [this](Files files, ViewPoint place) { drop(std::move(files), place); }),
      paste_(view, container,
             {.files = [this](Files files) { paste(std::move(files)); },
              .picture = [this](PagePicture picture) { paste(std::move(picture)); },
              .failed = [this](const std::string& text) { tell_(text); }}) {
}

void WebKitPageFiles::drop(Files files, ViewPoint place) {
  scope_.spawn(handDropped(std::move(files), place));
}

void WebKitPageFiles::paste(Files files) {
  scope_.spawn(handPasted(std::move(files)));
}

void WebKitPageFiles::paste(PagePicture picture) {
  scope_.spawn(handPicture(std::move(picture)));
}

async::Task<void> WebKitPageFiles::handDropped(Files files, ViewPoint place) {
  auto inspection = co_await inspectFiles(std::move(files));
  Result result = WebKitFileHandover::Answer();
  if (inspection.files.empty())
    co_await handover_.leave();
  else
    result = co_await handover_.drop(inspection.files, place);
  report(std::move(inspection), result);
}

async::Task<void> WebKitPageFiles::handPasted(Files files) {
  auto inspection = co_await inspectFiles(std::move(files));
  Result result = WebKitFileHandover::Answer();
  if (!inspection.files.empty())
    result = co_await handover_.paste(inspection.files);
  report(std::move(inspection), result);
}

async::Task<void> WebKitPageFiles::handPicture(PagePicture picture) {
  const auto result = co_await handover_.paste(std::move(picture));
  report({}, result);
}

void WebKitPageFiles::report(FileInspection inspection, const Result& result) {
  if (!result) {
    tell_(base::tr(noAnswer));
    return;
  }
  for (const auto index : result->lost)
    if (index < inspection.files.size())
      inspection.refused.push_back({inspection.files[index].name, RefusedFile::Reason::unreadable});
  if (const auto text = refusalText(inspection.refused))
    tell_(*text);
}

} // namespace ondrel::platform::pagefiles
