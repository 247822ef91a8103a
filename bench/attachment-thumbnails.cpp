// What memory the window of all attachments takes for 5,000 thumbnails that its user has seen: photographs of
// as many blobs, each fetched, decoded by the decoder's process and drawn. Only the service's page and the
// network are stand-ins. Prints one line of JSON for bench/run, in MiB more than with the rows alone.
#include "AttachmentWindow.h"
#include "Bench.h"
#include "async/sleep.h"
#include "attachments/AttachmentDownloader.h"
#include "platform/linux/decoding/ChildDecoder.h"
#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/FakeAttachments.h"
#include "ui/widgets/Style.h"

#include <adwaita.h>
#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;

constexpr std::size_t rowCount = 5000;
constexpr int photoWidth = 1024; // pixels
constexpr int photoHeight = 768;
constexpr async::Duration longestWait = 60s; // for the rows of one screen

// Of this process, shared memory by its share; in MiB.
double memory() {
  std::ifstream file("/proc/self/smaps_rollup");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("Pss:"))
      return std::stod(line.substr(4)) / 1024;
  fail("the memory can't be read");
}

// Some hundred kilobytes, as a camera's.
std::string photo() {
  const auto pixels = glib::adopt(gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, photoWidth, photoHeight));
  std::mt19937 random;
  std::generate_n(gdk_pixbuf_get_pixels(pixels.get()), gdk_pixbuf_get_byte_length(pixels.get()),
                  [&random] { return static_cast<guchar>(random() & 0x3F); });
  gchar* data = nullptr;
  gsize size = 0;
  if (!gdk_pixbuf_save_to_buffer(pixels.get(), &data, &size, "jpeg", nullptr, nullptr))
    fail("there is no photo");
  std::string result(data, size);
  g_free(data);
  return result;
}

// 30 emails have them all, so that they come at once.
void fill(support::FakeAttachments& service) {
  constexpr std::size_t emails = attachments::FilesViewModel::pageSize;
  std::vector<std::vector<support::FakeAttachments::File>> page(emails);
  for (std::size_t i = 0; i < rowCount; ++i)
    page[i % emails].push_back({.name = fmt::format("Photo {}.jpg", i), .type = "image/jpeg"});
  service.addPage(1, page, emails);
}

class Photos {
 public:
  Photos() : decoder_(ONDREL_DECODER) {
    fill(service_);
    service_.webViews.onMake = [make = service_.webViews.onMake](support::FakeWebView& view) {
      make(view);
      view.commitsAtOnce = true;
    };
    service_.http.answer = [photo = photo()](const auto&) { return support::FakeHttpClient::ok(photo); };
  }

  std::unique_ptr<attachments::FilesViewModel> makeModel() {
    return std::make_unique<attachments::FilesViewModel>(
        attachments::FilesServices{.mail = service_.mail,
                                   .downloader = downloader_,
                                   .types = service_.types,
                                   .directories = service_.files,
                                   .files = service_.files,
                                   .printer = service_.printer,
                                   .frontWindow = [] { return nullptr; },
                                   .watchDownload = [](const auto&) {},
                                   .openMessage = [](const std::string&, const std::string&) {}});
  }
  // What stand-ins remember for tests.
  void forget() {
    service_.http.requests.clear();
    for (const auto& made : service_.webViews.made)
      if (const auto view = made.lock()) {
        view->loads.clear();
        view->evaluations.clear();
        view->evaluationFrames.clear();
      }
  }

 private:
  support::FakeAttachments service_;
  platform::decoding::ChildDecoder decoder_;
  attachments::AttachmentDownloader downloader_{{.mail = service_.mail,
                                                 .settings = service_.settings,
                                                 .webViews = service_.webViews,
                                                 .linkScript = service_.script,
                                                 .http = service_.http,
                                                 .newFiles = service_.newFiles,
                                                 .files = service_.files,
                                                 .directories = service_.files,
                                                 .decoder = decoder_,
                                                 .types = service_.types}};
};

async::Task<void> measure(AttachmentWindow& window, attachments::FilesViewModel& files, Photos& photos) {
  std::size_t seen = 0;
  const auto subscription = files.thumbnailChanged.subscribe([&seen](const auto&) { ++seen; });
  while (files.rowCount() == 0)
    co_await async::sleep(1ms);
  co_await async::sleep(100ms); // before the list rests and asks for the first of them
  const auto begin = memory();
  auto* list = window.find(window.view.widget(), "attachments");
  auto* adjustment = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(list));
  const auto rows = gtk_adjustment_get_upper(adjustment) / static_cast<double>(rowCount);
  double most = 0;
  for (double top = 0; seen < rowCount; top += gtk_adjustment_get_page_size(adjustment)) {
    gtk_adjustment_set_value(adjustment, top);
    const auto covered = static_cast<std::size_t>((top + gtk_adjustment_get_page_size(adjustment)) / rows);
    const auto end = async::EventLoop::current().now() + longestWait;
    while (seen < std::min(covered, rowCount)) {
      if (async::EventLoop::current().now() > end)
        fail(fmt::format("{} thumbnails have come", seen));
      co_await async::sleep(5ms);
    }
    photos.forget();
    most = std::max(most, memory() - begin);
  }
  co_await async::sleep(1s);
  fmt::print("{{\"seen\": {}, \"most\": {:.1f}, \"end\": {:.1f}}}\n", seen, most, memory() - begin);
}

} // namespace

int main() {
  platform::desktop::chooseRendering();
  adw_init();
  ui::installStyle();
  const glib::GlibEventLoop loop;
  Photos photos;
  auto viewModel = photos.makeModel();
  auto& files = *viewModel;
  AttachmentWindow window(std::move(viewModel));
  runToEnd(measure(window, files, photos));
  return 0;
}
