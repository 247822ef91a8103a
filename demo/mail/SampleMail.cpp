#include "demo/mail/SampleMail.h"

#include "demo/files/Resources.h"
#include "demo/mail/SampleConversations.h"
#include "demo/mail/SampleFiles.h"

#include "base/Text.h"
#include <fmt/core.h>
#include <glib.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace ondrel::demo::mail {

namespace {

using namespace std::chrono_literals;

constexpr std::array people{"Nadia Okafor",    "Henrik Solberg",      "Ines Carvalho",   "Tomasz Wilk",
                            "Mei-Lin Zhao",    "Rafael Ortega",       "Priya Raman",     "Jonas Lindqvist",
                            "Amélie Fournier", "Kofi Mensah",         "Sanne de Wit",    "Oliver Brandt",
                            "Leila Haddad",    "Marco Bellini",       "Yuki Tanabe",     "Greta Holm",
                            "Parish library",  "River Street Bakery", "City rowing club"};

constexpr std::array topics{"the garden fence",      "Thursday's rehearsal", "the autumn timetable",
                            "your bicycle",          "the reading circle",   "the printer upstairs",
                            "our trip to the coast", "the winter coats",     "the choir recording",
                            "the new heating",       "seed potatoes",        "the kitchen shelf",
                            "the boat house key",    "Sunday lunch",         "the photo evening"};

constexpr std::array openings{"Something about {}", "Re: {}",      "Question on {}", "News of {}",
                              "{}: what next?",     "Notes on {}", "Change to {}",   "Thanks for {}",
                              "Reminder: {}",       "A word on {}"};

constexpr std::array sentences{"I walked past this morning and everything was still where we left it.",
                               "Could you bring the long ladder when you come over at the weekend?",
                               "The rain has stopped, so there is no reason to wait any longer.",
                               "My sister says hello and asks whether the recipe worked out.",
                               "We need two more people for the early shift, otherwise it is all settled.",
                               "Let me know before Wednesday, because the shop closes at noon that day.",
                               "There was a short delay at the bridge, and the rest of the way was quiet.",
                               "I have put the papers in the blue folder on the second shelf.",
                               "If it gets too late we can always take the last tram home.",
                               "The children painted a sign for the gate, and it is rather good.",
                               "Nobody has used the small room since spring, so it may be dusty.",
                               "I will be at my desk until five and on the train after that.",
                               "The old lamp flickers again; perhaps it only wants a new switch.",
                               "Please keep the receipt, the club pays half of it back.",
                               "There is soup on the stove and bread in the tin.",
                               "We counted forty chairs, which should be plenty for the evening."};

// The sample mail has to be the same everywhere, which the distributions of <random> don't promise.
class Dice {
 public:
  unsigned below(unsigned limit) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<unsigned>(state_ >> 33) % limit;
  }
  template <class Range>
  const auto& oneOf(const Range& range) {
    return range[below(static_cast<unsigned>(range.size()))];
  }

 private:
  std::uint64_t state_ = 20251120;
};

Address personCalled(const std::string& name) {
  auto local = base::lowercasedAscii(name);
  std::ranges::replace(local, ' ', '.');
  std::erase_if(local, [](char c) { return !g_ascii_isalpha(c) && c != '-' && c != '.'; });
  return {name, local + "@example.org"};
}

std::string sampleBody(Dice& dice) {
  std::string html;
  const auto paragraphs = 1 + dice.below(4);
  for (unsigned p = 0; p < paragraphs; ++p) {
    html += "<p>";
    const auto count = 1 + dice.below(4);
    for (unsigned s = 0; s < count; ++s)
      html += (s ? " " : "") + std::string(dice.oneOf(sentences));
    html += "</p>\n";
  }
  return html;
}

void addGenerated(MailStore& store, Dice& dice, const std::string& mailboxId, unsigned threads,
                  std::chrono::sys_seconds newest) {
  auto time = newest;
  for (unsigned i = 0; i < threads; ++i) {
    time -= std::chrono::minutes(20 + dice.below(300));
    const auto threadId = store.newThreadId();
    auto subject = fmt::format(fmt::runtime(dice.oneOf(openings)), dice.oneOf(topics));
    subject[0] = g_ascii_toupper(subject[0]);
    const auto messages = dice.below(5) == 0 ? 2 + dice.below(3) : 1;
    const auto from = personCalled(dice.oneOf(people));
    for (unsigned m = 0; m < messages; ++m) {
      auto email = store.draft(threadId);
      email.subject = subject;
      const bool isOwn = m % 2 == 1 || mailboxId == "sent";
      email.from = isOwn ? demoUser() : from;
      email.to = {isOwn ? from : demoUser()};
      email.receivedAt = time - std::chrono::minutes(7) * (messages - 1 - m);
      email.mailboxIds = {mailboxId};
      if (mailboxId != "inbox" || i >= 40 || dice.below(3) != 0)
        email.markRead();
      email.html = sampleBody(dice);
      if (dice.below(18) == 0) {
        const bool isText = dice.below(2) == 0;
        email.attachments = {isText ? attachSample(store, "notes.txt", fmt::format("Notes {}.txt", i))
                                    : attachSample(store, "plan.pdf", fmt::format("Plan {}.pdf", i))};
      }
      store.add(std::move(email));
    }
  }
}

} // namespace

Address demoUser() {
  return {"Robin Ashworth", "robin@demo.example"};
}

Attachment attachSample(MailStore& store, const std::string& sampleFile, const std::string& name) {
  const auto* type = sampleFile.ends_with(".pdf")   ? "application/pdf"
                     : sampleFile.ends_with(".png") ? "image/png"
                                                    : "text/plain; charset=utf-8";
  return {store.addBlob({"", name, type, files::resource("attachments/" + sampleFile).value_or("")}).id};
}

void fillWithSampleMail(MailStore& store) {
  for (const auto& [id, name, role] : {Mailbox{"inbox", "Inbox", "inbox"},
                                       {"archive", "Archive", "archive"},
                                       {"drafts", "Drafts", "drafts"},
                                       {"sent", "Sent", "sent"},
                                       {"junk", "Spam", "junk"},
                                       {"trash", "Trash", "trash"},
                                       {"highlighted", "Highlighted", ""},
                                       {"house", "House & garden", ""}})
    store.addMailbox({id, name, role});

  const std::chrono::sys_seconds newest =
      std::chrono::sys_days(std::chrono::year(2025) / 11 / 20) + 9h + 41min;
  addSampleConversations(store, newest);
  Dice dice;
  addGenerated(store, dice, "inbox", 2400, newest - 30h);
  addGenerated(store, dice, "archive", 300, newest - 24h * 40);
  addGenerated(store, dice, "sent", 120, newest - 20h);
  addGenerated(store, dice, "junk", 12, newest - 15h);
  addGenerated(store, dice, "house", 60, newest - 24h * 3);
  addSampleFiles(store, newest - 8h);
}

} // namespace ondrel::demo::mail
