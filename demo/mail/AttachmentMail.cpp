#include "demo/mail/AttachmentMail.h"

#include "demo/files/Resources.h"
#include "demo/mail/SampleBytes.h"
#include "demo/mail/SampleMail.h"

#include <fmt/core.h>

#include <string_view>
#include <vector>

namespace ondrel::demo::mail {

namespace {

using namespace std::chrono_literals;

constexpr const char* mailboxId = "files";
constexpr unsigned variants = 12; // of each kind of file
constexpr std::size_t largeFile = 50'000'000;
constexpr std::chrono::milliseconds slowPause{250}; // 40 times

constexpr const char* spreadsheet = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet";
constexpr const char* slides = "application/vnd.openxmlformats-officedocument.presentationml.presentation";

struct Kind {
  const char* name; // {} is a number
  const char* type;
  std::string (*bytes)(unsigned variant);
};

const Kind kinds[] = {
    {"Photo {}.jpg", "image/jpeg",
     [](unsigned) { return files::resource("attachments/photo.jpg").value_or(""); }},
    {"Drawing {}.png", "image/png", [](unsigned i) { return pngOf(120 + 40 * i, 160, i); }},
    {"Invoice {}.pdf", "application/pdf",
     [](unsigned i) { return pdfOf(fmt::format("Invoice {}", i), 1 + i); }},
    {"Papers {}.zip", "application/zip",
     [](unsigned i) { return zipOf("papers.txt", std::string(i + 1, 'p')); }},
    {"Rehearsal {}.wav", "audio/x-wav", [](unsigned i) { return wavOf(220 + 20 * i); }},
    {"Clip {}.mp4", "video/mp4", [](unsigned) { return std::string("A film in name only.\n"); }},
    {"Costs {}.xlsx", spreadsheet, [](unsigned i) { return zipOf("costs.txt", std::to_string(i)); }},
    {"Slides {}.pptx", slides, [](unsigned i) { return zipOf("slides.txt", std::to_string(i)); }},
    {"Notes {}.txt", "text/plain",
     [](unsigned i) { return fmt::format("Größe, žluť, 北京, עברית\nNote {}\n", i); }},
    {"Members {}.csv", "text/csv", [](unsigned i) { return fmt::format("name,bench\r\nNadia,{}\r\n", i); }},
    {"Record {}", "application/octet-stream", [](unsigned i) { return std::string(1 + i * 1000, '\x07'); }},
};

constexpr std::string_view hostileNames[] = {"../../../etc/passwd",
                                             "/etc/shadow",
                                             "..\\..\\boot.ini",
                                             ".bashrc",
                                             "-rf.txt",
                                             "CON.txt",
                                             "photo\xE2\x80\xAEgpj.desktop",
                                             "two\nlines.txt",
                                             "<img src=x onerror=alert(1)>.txt",
                                             "%2e%2e%2fup.txt",
                                             "quote\"; x=\".txt",
                                             "$(touch here).sh",
                                             "e\xCC\x81te\xCC\x81.txt",
                                             "\xF0\x9F\x93\x8E.txt",
                                             "no extension",
                                             "same.txt",
                                             "same.txt",
                                             "Same.txt"};

// Adds emails of which each is older than the one before.
class Album {
 public:
  explicit Album(MailStore& store, std::chrono::sys_seconds newest) : store_(store), next_(newest) {}

  const std::string& blob(Blob blob) { return store_.addBlob(std::move(blob)).id; }
  void add(const std::string& subject, const std::vector<std::string>& blobs,
           const std::string& threadId = {}, BodyKind kind = BodyKind::flow) {
    constexpr const char* senders[] = {"Nadia Okafor", "Henrik Solberg", "Amélie Fournier", "Kofi Mensah"};
    auto email = store_.draft(threadId);
    email.subject = subject;
    email.from = {senders[added_++ % std::size(senders)], fmt::format("sender{}@example.org", added_ % 4)};
    email.to = {demoUser()};
    email.receivedAt = next_ -= 3h;
    email.mailboxIds = {mailboxId};
    email.markRead();
    email.kind = kind;
    email.html = "<p>The files are attached.</p>";
    for (const auto& id : blobs)
      email.attachments.push_back({id});
    store_.add(std::move(email));
  }
  int added() const { return added_; }

 private:
  MailStore& store_;
  std::chrono::sys_seconds next_;
  int added_ = 0;
};

void addHardOnes(MailStore& store, Album& album) {
  std::vector<std::string> hostile;
  for (const auto name : hostileNames)
    hostile.push_back(album.blob({"", std::string(name), "text/plain", "Harmless.\n"}));
  hostile.push_back(album.blob({"", std::string(400, 'n') + ".txt", "text/plain", "Harmless.\n"}));
  album.add("Names that want to be elsewhere", hostile);

  const auto png = pngOf(400, 300, 5);
  album.add("Pictures that are none",
            {album.blob({"", "Torn.png", "image/png", png.substr(0, png.size() / 2)}),
             album.blob({"", "Text.png", "image/png", "Not a picture.\n"}),
             album.blob({"", "Wall.png", "image/png", withPngSize(png, 60000, 60000)}),
             album.blob({"", "Empty.png", "image/png", ""}),
             album.blob({"", "Torn.pdf", "application/pdf", pdfOf("Torn", 3).substr(0, 300)})});
  album.add("The whole recording",
            {album.blob({"", "Recording in full.bin", "application/octet-stream", "", largeFile})});
  album.add("From a slow place",
            {album.blob({"", "Slow.png", "image/png", pngOf(800, 600, 3), 0, slowPause})});
  const auto shared = album.blob({"", "Plan for both.pdf", "application/pdf", pdfOf("Plan for both", 2)});
  album.add("The plan", {shared});
  album.add("The plan again", {shared});

  const auto threadId = store.newThreadId();
  const auto folded = album.blob({"", "Folded.pdf", "application/pdf", pdfOf("Folded", 1)});
  for (int i = 0; i < 10; ++i)
    album.add("A long story", i == 6 ? std::vector{folded} : std::vector<std::string>(), threadId,
              BodyKind::folded);
}

} // namespace

void addAttachmentMail(MailStore& store, int emails) {
  if (!store.mailbox(mailboxId))
    store.addMailbox({mailboxId, "Files", ""});
  Album album(store, std::chrono::sys_days(std::chrono::year(2025) / 11 / 22) + 9h);
  addHardOnes(store, album);
  std::vector<std::string> made;
  for (unsigned i = 0; i < std::size(kinds) * variants; ++i)
    made.push_back(kinds[i % std::size(kinds)].bytes(i / std::size(kinds)));
  for (unsigned i = 0; album.added() < emails; ++i) {
    const auto& kind = kinds[i % std::size(kinds)];
    std::vector<std::string> blobs;
    for (unsigned file = 0; file <= i % 7 / 5; ++file)
      blobs.push_back(
          album.blob({"", fmt::format(fmt::runtime(kind.name), i + 1), kind.type, made[i % made.size()]}));
    album.add(fmt::format("Files of week {}", i / 10 + 1), blobs);
  }
  store.forgetChanges(); // nobody wants to hear of each
}

} // namespace ondrel::demo::mail
