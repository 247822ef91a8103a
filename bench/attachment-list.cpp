// What the window of all attachments costs with 100,000 rows. Prints one line of JSON for bench/run, in
// milliseconds: from the data to the first rows on the screen, and the processor time of frames.
#include "AttachmentWindow.h"
#include "Bench.h"
#include "async/sleep.h"
#include "attachments/FilesViewModel.h"
#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/FakeAttachments.h"
#include "ui/widgets/Style.h"

#include <adwaita.h>
#include <fmt/format.h>

#include <ctime>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;

constexpr std::size_t rowCount = 100000;
constexpr std::size_t scrolledRows = 10000;
constexpr int searches = 10;

double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Tells how long frames take. The toolkit draws on this thread, so that its processor time is theirs; what
// else the machine does isn't in it.
class Frames {
 public:
  explicit Frames(GdkFrameClock* clock) : clock_(clock) {
    connections_.push_back(glib::connect<void(GdkFrameClock*)>(
        clock, "before-paint", [this](GdkFrameClock*) { begin_ = processorTime(); }));
    connections_.push_back(glib::connect<void(GdkFrameClock*)>(clock, "after-paint", [this](GdkFrameClock*) {
      last_ = processorTime() - begin_;
      ++count_;
    }));
  }

  // One with work at its beginning, as a pointer's motion or a running scroll does it.
  async::Task<double> timeOf(std::function<void()> work) {
    double ownTime = 0;
    const auto connection = glib::connect<void(GdkFrameClock*)>(clock_, "flush-events", [&](GdkFrameClock*) {
      const auto begin = processorTime();
      if (const auto once = std::exchange(work, nullptr))
        once();
      ownTime += processorTime() - begin;
    });
    const auto before = count_;
    gdk_frame_clock_request_phase(clock_, GDK_FRAME_CLOCK_PHASE_FLUSH_EVENTS);
    gdk_frame_clock_request_phase(clock_, GDK_FRAME_CLOCK_PHASE_PAINT);
    while (count_ == before)
      co_await async::sleep(1ms);
    co_return ownTime + last_;
  }

 private:
  GdkFrameClock* clock_;
  double begin_ = 0;
  double last_ = 0;
  std::size_t count_ = 0;
  std::vector<glib::Connection> connections_;
};

// 30 emails have them all, so that they come at once.
void fill(support::FakeAttachments& service) {
  static constexpr const char* types[] = {"image/png", "application/pdf", "application/zip", "text/plain",
                                          "application/octet-stream"};
  constexpr std::size_t emails = attachments::FilesViewModel::pageSize;
  std::vector<std::vector<support::FakeAttachments::File>> page(emails);
  for (std::size_t i = 0; i < rowCount; ++i)
    page[i % emails].push_back({.name = fmt::format("Report of quarter {}, final version {}.pdf", i % 7, i),
                                .type = types[i / emails % std::size(types)],
                                .subject = fmt::format("Minutes of meeting {}", i % emails),
                                .size = static_cast<std::int64_t>(i * 7919 % 9000000)});
  service.addPage(1, page, emails);
}

std::string line(const char* name, const std::vector<double>& values) {
  return fmt::format("\"{0}\": {{\"median\": {1:.2f}, \"p99\": {2:.2f}, \"longest\": {3:.2f}}}", name,
                     median(values), quantile(values, 0.99), quantile(values, 1));
}

// So many rows further in each frame, over 10,000 of them.
async::Task<std::vector<double>> scroll(Frames& frames, GtkAdjustment* adjustment, std::size_t step) {
  const auto height = gtk_adjustment_get_upper(adjustment) / static_cast<double>(rowCount);
  std::vector<double> times;
  for (std::size_t i = 0; i < scrolledRows; i += step)
    times.push_back(co_await frames.timeOf(
        [&] { gtk_adjustment_set_value(adjustment, static_cast<double>(i) * height); }));
  co_return times;
}

async::Task<void> measure(AttachmentWindow& window, attachments::FilesViewModel& files) {
  Clock::time_point came;
  const auto subscription = files.rowsChanged.subscribe([&](const auto&) { came = Clock::now(); });
  Frames frames(gtk_widget_get_frame_clock(GTK_WIDGET(window.window)));
  while (files.rowCount() == 0)
    co_await async::sleep(1ms);
  co_await frames.timeOf(nullptr);
  const auto first = Milliseconds(Clock::now() - came).count();
  if (files.rowCount() != rowCount)
    fail(fmt::format("{} rows have come", files.rowCount()));
  co_await async::sleep(500ms);

  auto* list = window.find(window.view.widget(), "attachments");
  auto* adjustment = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(list));
  const auto wheel = co_await scroll(frames, adjustment, 5);
  const auto fling = co_await scroll(frames, adjustment, 40);
  auto* search = window.find(window.view.widget(), "attachments-search");
  std::vector<double> keys;
  const std::string text = "version 123";
  for (int round = 0; round < searches; ++round)
    for (std::size_t i = 0; i <= text.size(); ++i)
      keys.push_back(co_await frames.timeOf(
          [&] { gtk_editable_set_text(GTK_EDITABLE(search), text.substr(0, i).c_str()); }));
  fmt::print("{{\"firstRows\": {:.2f}, {}, {}, {}}}\n", first, line("wheel", wheel), line("fling", fling),
             line("keys", keys));
}

} // namespace

int main() {
  platform::desktop::chooseRendering();
  adw_init();
  ui::installStyle();
  const glib::GlibEventLoop loop;
  support::FakeAttachments service;
  fill(service);
  auto viewModel = service.makeModel();
  auto& files = *viewModel;
  AttachmentWindow window(std::move(viewModel));
  runToEnd(measure(window, files));
  return 0;
}
