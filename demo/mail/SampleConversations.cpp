#include "demo/mail/SampleConversations.h"

#include "demo/mail/SampleMail.h"

#include <fmt/core.h>

#include <array>

namespace ondrel::demo::mail {

namespace {

using namespace std::chrono_literals;

const Address nadia{"Nadia Okafor", "nadia.okafor@example.org"};
const Address henrik{"Henrik Solberg", "henrik.solberg@example.org"};
const Address ines{"Ines Carvalho", "ines.carvalho@example.org"};
const Address bakery{"River Street Bakery", "post@bakery.example"};
const Address stranger{"Account Office", "office@unknown.example"};

// Adds the messages of one thread, an hour apart, so that the last is at the given time.
class Conversation {
 public:
  Conversation(MailStore& store, std::string subject, std::chrono::sys_seconds last, int messages)
      : store_(store), threadId_(store.newThreadId()), subject_(std::move(subject)),
        next_(last - 1h * (messages - 1)) {}

  Conversation& message(const Address& from, std::string html, std::vector<Attachment> attachments = {},
                        BodyKind kind = BodyKind::flow) {
    auto email = store_.draft(threadId_);
    email.subject = subject_;
    email.from = from;
    email.to = {from.email == demoUser().email ? nadia : demoUser()};
    email.receivedAt = next_;
    email.mailboxIds = {"inbox"};
    if (!unread_)
      email.markRead();
    email.kind = kind;
    email.html = std::move(html);
    email.attachments = std::move(attachments);
    store_.add(std::move(email));
    next_ += 1h;
    return *this;
  }

  Conversation& unread() {
    unread_ = true;
    return *this;
  }

 private:
  MailStore& store_;
  std::string threadId_;
  std::string subject_;
  std::chrono::sys_seconds next_;
  bool unread_ = false;
};

void addWorkshop(MailStore& store, std::chrono::sys_seconds last) {
  Conversation(store, "Plans for the spring workshop", last, 4)
      .message(nadia,
               "<p>Hello Robin,</p><p>the hall by the canal is free on the second weekend of March. It has a "
               "stove, twelve work benches and a kitchen. Shall we take it?</p><p>Nadia</p>")
      .message(demoUser(),
               "<p>Yes, please. Twelve benches are just right. I will ask Henrik about the tools.</p>")
      .message(
          henrik,
          "<p>Tools are no trouble. I can bring the planes and both lathes in the van, if somebody helps "
          "me to carry them up the steps.</p><p>One question is left: who looks after the food?</p>")
      .unread()
      .message(
          nadia,
          "<p>Dear both,</p><p>the hall is ours, and the caretaker leaves the key with the bakery. I have "
          "put "
          "the papers together:</p><ul>"
          "<li>what we wrote about it last year: <a href=\"/mail/Inbox/T2.M8?u=demo\">minutes of the "
          "garden society</a></li>"
          "<li>how to get there: <a href=\"https://example.com/canal-hall\" target=\"_blank\" "
          "rel=\"noopener\">map of the canal hall</a></li>"
          "<li>for questions: <a href=\"mailto:caretaker@example.org?subject=Canal%20hall\">write to the "
          "caretaker</a></li></ul>"
          "<p>The programme is attached. On Saturday we begin at nine with coffee, then everyone chooses a "
          "bench. "
          "In the evening there is soup. On Sunday we finish what we began and sweep the floor.</p>"
          "<p>The number of places is small, so please tell me by Friday who comes.</p><p>Nadia</p>",
          {attachSample(store, "plan.pdf", "Programme.pdf"),
           attachSample(store, "garden.png", "Canal hall.png"),
           attachSample(store, "notes.txt", "What to bring.txt")});
}

void addMinutes(MailStore& store, std::chrono::sys_seconds last) {
  constexpr std::array matters{"the water pipe",        "the compost", "the tool shed",
                               "the fence to the path", "the bees",    "the summer party",
                               "the waiting list",      "the gate key"};
  constexpr int messages = 24;
  Conversation conversation(store, "Minutes of the garden society", last, messages);
  for (int m = 0; m < messages; ++m) {
    auto html = fmt::format("<h2>Meeting number {}</h2>", m + 1);
    const int paragraphs = m + 1 == messages ? 60 : 6;
    for (int p = 0; p < paragraphs; ++p) {
      html += fmt::format(
          "<p>{}. On {}: the members talked it over at length. It was agreed to look at it again when "
          "the days grow longer, and to ask the neighbours first. Costs were put at {} crowns.</p>\n",
          p + 1, matters[static_cast<std::size_t>(m + p) % matters.size()], 40 + 15 * ((m + p) % 9));
    }
    conversation.message(m % 2 ? ines : henrik, std::move(html));
  }
}

void addNewsletter(MailStore& store, std::chrono::sys_seconds last) {
  const std::string page = "<h1 style=\"color:#8a4b12\">River Street Bakery</h1>"
                           "<p>This week: rye with caraway, walnut rolls, and the plum cake is back.</p>"
                           "<p>Orders for the holidays are taken until the tenth. See the <a "
                           "href=\"https://example.com/bakery\" target=\"_blank\">list of breads</a> or <a "
                           "href=\"mailto:post@bakery.example\" target=\"_blank\">write to us</a>.</p>"
                           "<p>Warm regards from the oven. Warm regards from the shop.</p>";
  Conversation(store, "What comes out of the oven this week", last, 2)
      .message(bakery, page, {}, BodyKind::staticFrame)
      .unread()
      .message(bakery, page + "<p>P.S. We open at half past six on Saturday.</p>", {}, BodyKind::scriptFrame);
}

void addRepeatedText(MailStore& store, std::chrono::sys_seconds last) {
  Conversation(store, "Three times the same sentence", last, 1)
      .message(ines,
               "<p>The key is under the stone. Please look twice.</p>"
               "<p>The key is under the stone. Some of it is <b>bold</b>, some <a "
               "href=\"https://example.com/stone\" target=\"_blank\">is a link</a> and some is plain.</p>"
               "<p>The key is under the stone. The letters aaa stand here for the sake of overlaps.</p>");
}

// NOLINTBEGIN(misc-misleading-bidirectional): it means to mislead
void addHostile(MailStore& store, std::chrono::sys_seconds last) {
  Conversation(store, "Your invoice \u202Efdp.exe", last, 1)
      .message(stranger,
               "<p>Files with names that want to end up elsewhere, and links that are not what they say.</p>"
               "<p><a href=\"https://example.com/\u202Emoc.elpmaxe//:sptth\" "
               "target=\"_blank\">https://bank.example/</a> "
               "<a href=\"javascript:alert('from a mail')\">read more</a> "
               "<a href=\"email://open?id=M1\">open in the program</a> "
               "<a href=\"file:///etc/passwd\" target=\"_blank\">a file of this machine</a></p>",
               {attachSample(store, "notes.txt", "../../outside.txt"),
                attachSample(store, "notes.txt", std::string(300, 'n') + ".txt"),
                attachSample(store, "notes.txt", ".hidden"),
                attachSample(store, "notes.txt", "inv\u202Efdp.exe"),
                attachSample(store, "notes.txt", "line\nbreak/slash.desktop")});
}

// NOLINTEND(misc-misleading-bidirectional)

void addPageInAFrame(MailStore& store, std::chrono::sys_seconds last) {
  Conversation(store, "Where the ferry goes in winter", last, 1)
      .message(henrik,
               "<p>The ferry leaves at seven. In winter it turns back at the lighthouse.</p>"
               "<p>On Sundays there is none at all, and the pier is closed when it freezes. Whoever wants to "
               "cross then asks the warden, who has a boat of his own.</p>",
               {}, BodyKind::ownFrame);
}

void addLateBodies(MailStore& store, std::chrono::sys_seconds last) {
  Conversation conversation(store, "Who has the oars", last, 5);
  conversation
      .message(ines, "<p>The oars are in the shed. The boat itself needs a coat of paint.</p>", {},
               BodyKind::late)
      .message(henrik, "<p>Which shed? There are two by now.</p><p>The oars are in the shed, she says.</p>",
               {}, BodyKind::late)
      .message(nadia,
               "<p>The oars are in the shed by the bridge.</p><p>To say it again: the key hangs on the nail. "
               "The oars are in the shed and dry.</p>",
               {}, BodyKind::late)
      .message(demoUser(), "<p>I have looked. The oars are in the shed indeed.</p>", {}, BodyKind::late)
      .message(ines, "<p>Thank you all. The oars are in the shed, and so is the paint.</p>", {},
               BodyKind::late);
}

} // namespace

void addSampleConversations(MailStore& store, std::chrono::sys_seconds newest) {
  addWorkshop(store, newest);
  addMinutes(store, newest - 2h);
  addNewsletter(store, newest - 3h);
  addRepeatedText(store, newest - 5h);
  addHostile(store, newest - 7h);
  addPageInAFrame(store, newest - 10h);
  addLateBodies(store, newest - 12h);
}

} // namespace ondrel::demo::mail
