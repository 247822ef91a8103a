#include "demo/mail/SampleFiles.h"

#include "demo/mail/SampleMail.h"

namespace ondrel::demo::mail {

namespace {

using namespace std::chrono_literals;

constexpr const char* spreadsheet = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet";
constexpr const char* slides = "application/vnd.openxmlformats-officedocument.presentationml.presentation";
constexpr const char* document = "application/vnd.openxmlformats-officedocument.wordprocessingml.document";

// Adds messages one hour apart, each older than the one before.
class Shelf {
 public:
  Shelf(MailStore& store, std::chrono::sys_seconds newest) : store_(store), next_(newest) {}

  Email draft(std::string subject, std::vector<Attachment> attachments) {
    auto email = store_.draft();
    email.subject = std::move(subject);
    email.from = {"Mei-Lin Zhao", "mei-lin.zhao@example.org"};
    email.to = {demoUser()};
    email.receivedAt = next_;
    email.mailboxIds = {"archive"};
    email.markRead();
    email.html = "<p>The files are attached.</p>";
    email.attachments = std::move(attachments);
    next_ -= 1h;
    return email;
  }
  void add(std::string subject, std::vector<Attachment> attachments) {
    store_.add(draft(std::move(subject), std::move(attachments)));
  }
  // A file of any type. Programs that look inside will find nothing to show.
  Attachment file(std::string name, std::string type, std::string bytes) {
    return {store_.addBlob({"", std::move(name), std::move(type), std::move(bytes)}).id};
  }
  Attachment sample(const char* sampleFile, const std::string& name) {
    return attachSample(store_, sampleFile, name);
  }

 private:
  MailStore& store_;
  std::chrono::sys_seconds next_;
};

void addKinds(Shelf& shelf) {
  shelf.add("Pictures of the canal hall", {shelf.sample("garden.png", "Hall from outside.png"),
                                           shelf.sample("garden.png", "Hall from inside.png")});
  shelf.add("Everything for the workshop in one place",
            {shelf.file("Tools.zip", "application/zip", "PK\x05\x06" + std::string(18, '\0')),
             shelf.file("Costs.xlsx", spreadsheet, "A spreadsheet in name only.\n"),
             shelf.file("Welcome.pptx", slides, "Slides in name only.\n"),
             shelf.file("Rules of the house.docx", document, "A document in name only.\n")});
  shelf.add("Sound and film from the rehearsal",
            {shelf.file("Rehearsal.wav", "audio/x-wav", "A recording in name only.\n"),
             shelf.file("Rehearsal.mp4", "video/mp4", "No film.\n")});
  shelf.add("Dates, numbers and an address",
            {shelf.file("Spring.ics", "text/calendar", "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n"),
             shelf.file("Members.csv", "text/csv", "name,bench\r\nNadia,1\r\nHenrik,2\r\n"),
             shelf.file("Raw data", "application/octet-stream", std::string("\0\1\2\3", 4))});
  shelf.add("A large plan", {shelf.file("Plan in full.bin", "application/octet-stream",
                                        std::string(std::size_t{3} << 20, 'p'))});
}

void addOddities(MailStore& store, Shelf& shelf) {
  auto inlineImage = shelf.sample("garden.png", "logo.png");
  inlineImage.disposition = "inline";
  inlineImage.cid = "logo@mail.example.org";
  auto markedImage = shelf.sample("garden.png", "signature.png");
  markedImage.cid = "signature@mail.example.org";
  auto shownText = shelf.sample("notes.txt", "shown.txt");
  shownText.disposition = "inline";
  shelf.add("Images inside of the text", {inlineImage, markedImage, shownText});

  auto undeclared = shelf.file("", "image/gif", "GIF89a");
  undeclared.disposition = "";
  shelf.add("A file without a name", {undeclared});

  auto nameless = shelf.draft("A message without Message-ID", {shelf.sample("notes.txt", "Orphan.txt")});
  nameless.messageId = "";
  store.add(std::move(nameless));

  auto wordless = shelf.draft("", {shelf.sample("plan.pdf", "Scan.pdf")});
  wordless.subject = std::nullopt;
  wordless.from = {};
  wordless.html = "";
  store.add(std::move(wordless));

  auto shared = shelf.draft("In two mailboxes at once", {shelf.sample("plan.pdf", "Garden plan.pdf")});
  shared.mailboxIds = {"archive", "house"};
  shared.keywords.insert("$flagged");
  store.add(std::move(shared));

  auto junk = shelf.draft("You have won", {shelf.sample("plan.pdf", "Prize.pdf")});
  junk.mailboxIds = {"junk"};
  junk.from = {"Prize Office", "office@unknown.example"};
  store.add(std::move(junk));

  auto unsent = shelf.draft("Not yet sent", {});
  unsent.mailboxIds = {"drafts"};
  unsent.from = demoUser();
  unsent.keywords.insert("$draft");
  store.add(std::move(unsent));
}

} // namespace

void addSampleFiles(MailStore& store, std::chrono::sys_seconds newest) {
  Shelf shelf(store, newest);
  addKinds(shelf);
  addOddities(store, shelf);
}

} // namespace ondrel::demo::mail
