// What 10,000 highlights cost the program: reading their file, adding one more, and bringing all of them in
// from an export. On the disk, flushed as the program does it. Prints one line of JSON for bench/run: times
// in milliseconds, but the import's in seconds.
#include "Bench.h"
#include "async/Timer.h"
#include "base/Base64.h"
#include "base/Json.h"
#include "highlights/HighlightImport.h"
#include "highlights/file/HighlightStore.h"
#include "platform/linux/files/GioFileReader.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/FakeApplication.h"
#include "support/FakeDesktop.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <ctime>
#include <filesystem>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;

constexpr int highlightCount = 10'000;
constexpr int highlightsInMessage = 5;
constexpr int rounds = 51;

double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// As pages and servers name them.
highlights::ExportedHighlight exported(int number) {
  const int message = number / highlightsInMessage;
  return {
      fmt::format("{:08x}.4f1c2b7a{:06}@mail.example.org", message * 2654435761U, message),
      {.id = fmt::format("{:08x}-5f0a-4c1e-9b7d-{:012}", number * 2246822519U, number),
       .threadId = fmt::format("T7c1e0d9b8a2f4e6c{:06}", message),
       .exact = "the figures of the last quarter, and what follows from them for the \"next\" one – Grüße",
       .prefix = "we have had a long look at all of",
       .suffix = ", which Ann will send on Monday. ",
       .occurrenceIndex = number % 3,
       .createdAt = 780'000'000.0 + number * 61.137}};
}

std::vector<highlights::ExportedHighlight> all() {
  std::vector<highlights::ExportedHighlight> list;
  for (int i = 0; i < highlightCount; ++i)
    list.push_back(exported(i));
  return list;
}

class Folder final : public platform::Directories {
 public:
  // In the working directory: the folder for temporary files is often none of a disk.
  Folder() {
    std::string name = "ondrel-bench-XXXXXX";
    if (!mkdtemp(name.data()))
      fail("no folder can be made");
    path_ = std::filesystem::absolute(name);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() override {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string file(const std::string& name) const { return path_ + "/" + name; }
  std::optional<std::string> applicationSupport() const override { return path_; }
  std::optional<std::string> documents() const override { return path_; }
  std::optional<std::string> downloads() const override { return path_; }
  std::string temporary() const override { return path_; }
  std::string home() const override { return path_; }

 private:
  std::string path_;
};

// The longest time in which a timer that is always due had no turn.
class StallProbe {
 public:
  double longest() const { return Milliseconds(longest_).count(); }

 private:
  void tick() {
    const auto now = Clock::now();
    longest_ = std::max(longest_, now - last_);
    last_ = now;
    timer_ = async::Timer(1ms, [this] { tick(); });
  }

  Clock::time_point last_ = Clock::now();
  Clock::duration longest_{};
  async::Timer timer_{1ms, [this] { tick(); }};
};

struct Import {
  double seconds = 0;
  double processor = 0;
  double longestStall = 0;
  std::size_t steps = 0;
};

Import importAll(Folder& folder, platform::FileStore& files) {
  const auto path = folder.file("export.html");
  if (!files.writeAtomically(path, fmt::format(R"(<script id="ondrel-highlights-data">{}</script>)",
                                               highlights::encodedPayload(all()))))
    fail("the export can't be written");
  highlights::HighlightStore store(folder, files);
  support::FakeApplication application;
  const auto window = application.makeWindow({});
  application.setKey(window);
  support::FakePanels panels;
  panels.openPaths = std::vector{path};
  platform::files::GioFileReader reader;
  highlights::HighlightImport highlightImport(
      {.store = store,
       .application = application,
       .panels = panels,
       .reader = reader,
       .pushMailboxMarks = []() -> async::Task<void> { co_return; },
       .syncTags = [](std::set<std::string>, const auto&) -> async::Task<void> { co_return; }});
  Import import;
  const auto watch = highlightImport.progress().observe([&] { ++import.steps; });
  const StallProbe probe;
  const auto processor = processorTime();
  const auto begin = Clock::now();
  runToEnd(highlightImport.importHighlights());
  import.seconds = Milliseconds(Clock::now() - begin).count() / 1000;
  import.processor = (processorTime() - processor) / 1000;
  import.longestStall = probe.longest();
  if (store.allHighlights().size() != highlightCount)
    fail(fmt::format("{} highlights were imported", store.allHighlights().size()));
  return import;
}

} // namespace

int main() {
  glib::GlibEventLoop loop;
  Folder folder;
  platform::files::PosixFileStore files;
  const auto import = importAll(folder, files);

  std::vector<double> load;
  for (int round = 0; round < rounds; ++round) {
    const auto begin = Clock::now();
    const highlights::HighlightStore store(folder, files);
    load.push_back(Milliseconds(Clock::now() - begin).count());
    if (store.byMessageId().size() != highlightCount / highlightsInMessage)
      fail("the file holds something else");
  }

  highlights::HighlightStore store(folder, files);
  std::vector<double> add, addProcessor;
  for (int round = 0; round < rounds; ++round) {
    auto one = exported(highlightCount + round * highlightsInMessage);
    const auto processor = processorTime();
    const auto begin = Clock::now();
    store.add(std::move(one.highlight), one.messageId);
    add.push_back(Milliseconds(Clock::now() - begin).count());
    addProcessor.push_back(processorTime() - processor);
  }
  fmt::print("{{\"load\": {:.2f}, \"add\": {:.2f}, \"addProcessor\": {:.2f}, \"import\": {:.2f}, "
             "\"importProcessor\": {:.2f}, \"importStall\": {:.1f}, \"importSteps\": {}}}\n",
             median(std::move(load)), median(std::move(add)), median(std::move(addProcessor)), import.seconds,
             import.processor, import.longestStall, import.steps);
  return 0;
}
