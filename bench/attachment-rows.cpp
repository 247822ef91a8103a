// How long a keystroke of the search takes over 100,000 attachments, and the first rows of as many. Prints
// one line of JSON with milliseconds of processor time, for bench/run.
#include "Bench.h"
#include "attachments/AttachmentRows.h"
#include "platform/linux/desktop/SharedMimeTypes.h"

#include <ctime>
#include <string_view>

namespace {

using namespace ondrel;
using namespace ondrel::bench;

constexpr int rowCount = 100'000;
constexpr int rounds = 20;

// Of this thread, in milliseconds: it waits for nothing.
double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

std::vector<jmap::AttachmentInfo> makeRows() {
  constexpr const char* words[] = {"Quarterly", "report",  "überarbeitet", "invoice", "Photo",
                                   "Straße",    "minutes", "Änderung",     "scan",    "été"};
  constexpr const char* types[] = {"application/pdf", "image/jpeg", "application/zip", "text/csv"};
  std::vector<jmap::AttachmentInfo> rows;
  for (int i = 0; i < rowCount; ++i)
    rows.push_back(
        {.id = fmt::format("M7c1e0d9b8a2f4e6c{:08}-G{}", i, i),
         .emailId = fmt::format("M7c1e0d9b8a2f4e6c{:08}", i),
         .blobId = fmt::format("G{}", i),
         .name = fmt::format("{} {} — {} ({}).pdf", words[i % 10], words[i / 7 % 10], words[i / 3 % 10], i),
         .type = types[i % 4],
         .size = 1000 + i,
         .subject =
             fmt::format("Re: The figures of the {} quarter, and what {} follows", i % 4, words[i % 9]),
         .from = fmt::format("Ann Example-{}", i % 977),
         .receivedAt = {}});
  return rows;
}

// What is typed, letter by letter, and rubbed out again.
std::vector<double> keystrokes(attachments::AttachmentRows& rows, std::string_view text,
                               const std::set<attachments::AttachmentCategory>& categories) {
  std::vector<double> times;
  const auto show = [&](std::size_t length) {
    const auto begin = processorTime();
    rows.setFilter(text.substr(0, length), categories);
    times.push_back(processorTime() - begin);
  };
  for (std::size_t length = 1; length <= text.size(); ++length)
    show(length);
  for (auto length = text.size(); length-- > 0;)
    show(length);
  return times;
}

} // namespace

int main() {
  const platform::desktop::SharedMimeTypes types;
  attachments::AttachmentRows rows(types);
  std::size_t changes = 0;
  const auto followed = rows.changed.subscribe([&](const attachments::RowsChange&) { ++changes; });
  auto all = makeRows();
  const auto begin = processorTime();
  rows.append(std::move(all));
  const auto fill = processorTime() - begin;

  std::vector<double> times;
  for (int round = 0; round < rounds; ++round)
    for (const auto* text : {"report 99", "e", "strasse", "ANN EXAMPLE-9", "nothing has this", "(77"})
      for (const auto& categories :
           {std::set<attachments::AttachmentCategory>(), {attachments::AttachmentCategory::image}})
        for (const auto time : keystrokes(rows, text, categories))
          times.push_back(time);
  if (changes == 0)
    fail("no search changed the rows");
  fmt::print("{{\"fill\": {:.2f}, \"p50\": {:.3f}, \"p99\": {:.3f}, \"longest\": {:.3f}}}\n", fill,
             median(times), quantile(times, 0.99), quantile(times, 1));
  return 0;
}
