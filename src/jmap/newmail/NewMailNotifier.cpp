#include "jmap/newmail/NewMailNotifier.h"

#include "async/sleep.h"
#include "base/Translation.h"
#include "jmap/mail/MailQueries.h"
#include "jmap/mail/MailRequest.h"
#include "jmap/mail/MessageURL.h"
#include "jmap/protocol/JMAPReading.h"
#include "settings/AppSettings.h"

#include <boost/json/value_from.hpp>

#include <algorithm>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

constexpr auto categoryIdentifier = "NEW_EMAIL";
constexpr auto summaryCategoryIdentifier = "NEW_EMAILS";
constexpr auto archiveAction = "ARCHIVE_EMAIL";
constexpr auto markAsReadAction = "MARK_EMAIL_AS_READ";
constexpr auto deleteAction = "DELETE_EMAIL";
constexpr std::size_t mostInOneRequest = 50;

std::optional<std::string> find(const std::map<std::string, std::string>& userInfo, const std::string& key) {
  const auto found = userInfo.find(key);
  return found == userInfo.end() ? std::nullopt : std::optional(found->second);
}

// Why nobody needs to be told of it; empty where somebody does. Without the list of its mailboxes it counts
// as in the inbox.
std::string_view reasonForSilence(const base::JsonReader& email, const std::optional<std::string>& inboxId) {
  const auto mailboxIds = email["mailboxIds"];
  if (inboxId && mailboxIds.object() && !mailboxIds[*inboxId].boolean().value_or(false))
    return "not in inbox";
  const auto keywords = email["keywords"];
  if (keywords["$seen"].boolean().value_or(false))
    return "already read";
  if (keywords["$draft"].boolean().value_or(false))
    return "a draft";
  return {};
}

} // namespace

NewMailNotifier::NewMailNotifier(JMAPClient& client, MailQueries& queries, NotificationManager& notifications,
                                 settings::AppSettings& settings,
                                 std::function<void(const std::string& url)> openURL,
                                 std::function<void()> badgeRefresh)
    : client_(client), queries_(queries), actions_(client, queries, std::move(badgeRefresh)),
      notifications_(notifications), settings_(settings), openURL_(std::move(openURL)) {
  // From the beginning: the program may have been started for an answer, long before its page is there.
  for (const auto* category : {categoryIdentifier, summaryCategoryIdentifier})
    notifications_.setResponseHandler(
        category, [this](const platform::NotificationResponse& response) { respond(response); });
}

NewMailNotifier::~NewMailNotifier() {
  for (const auto* category : {categoryIdentifier, summaryCategoryIdentifier})
    notifications_.setResponseHandler(category, nullptr);
}

async::Task<void> NewMailNotifier::setUp() {
  co_await notifications_.requestPermission();
  offerActions();
  notifications_.registerCategory({summaryCategoryIdentifier, {}, true});
  looking_.cancel(); // it may wait for a page on which nobody has signed in
  looking_ = scope_.spawn(offerArchive());
}

// No notification waits for it.
void NewMailNotifier::lookForArchive() {
  if (looking_.done())
    looking_ = scope_.spawn(offerArchive());
}

async::Task<void> NewMailNotifier::offerArchive() {
  co_await actions_.lookForArchive();
  offerActions();
}

void NewMailNotifier::offerActions() {
  std::vector<platform::NotificationAction> actions{{markAsReadAction, base::tr("Mark as Read")},
                                                    {deleteAction, base::tr("Delete"), true}};
  if (actions_.canArchive())
    // TRANSLATORS: a button below a new message: put it into the archive
    actions.insert(actions.begin(), {archiveAction, base::trIn("verb", "Archive")});
  notifications_.registerCategory({categoryIdentifier, std::move(actions), true});
}

async::Task<Result<NewMailNotifier::Inbox>>
NewMailNotifier::fetch(std::vector<std::string> ids, json::array properties, std::string_view operation) {
  const auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error());
  const auto accountId = mailAccountId(*session);
  if (!accountId) {
    networkLogger.error("{}: no mail account ID in JMAP session", operation);
    co_return Inbox{.accountId = {}, .isComplete = false};
  }
  Inbox inbox{.accountId = *accountId};
  for (std::size_t at = 0; at < ids.size(); at += mostInOneRequest) {
    const auto end = ids.begin() + static_cast<std::ptrdiff_t>(std::min(ids.size(), at + mostInOneRequest));
    const std::vector<std::string> some(ids.begin() + static_cast<std::ptrdiff_t>(at), end);
    auto body = jmapRequest(
        "Email/get", {{"accountId", *accountId}, {"ids", json::value_from(some)}, {"properties", properties}},
        "g0");
    const auto reply = co_await ask(client_, *session, std::move(body));
    if (!reply)
      co_return std::unexpected(reply.error());
    const auto list = answeredList(*reply, 0);
    if (!list.array()) {
      networkLogger.error("{}: unexpected Email/get response format", operation);
      inbox.isComplete = false;
      continue;
    }
    for (const auto& element : list.elements())
      if (const auto* email = element.object())
        inbox.emails.push_back(*email);
  }
  auto inboxId = co_await queries_.fetchInboxMailboxId();
  if (inboxId)
    inbox.id = std::move(*inboxId);
  co_return inbox;
}

async::Task<Result<NewMail>> NewMailNotifier::newMailAmong(std::vector<std::string> ids) {
  const auto inbox =
      co_await fetch(std::move(ids), {"from", "subject", "mailboxIds", "keywords"}, "notifyForEmails");
  if (!inbox)
    co_return std::unexpected(inbox.error());
  NewMail mail{.inboxName = queries_.mailboxes().inboxName.value_or("Inbox"),
               .accountParam = accountParameter(inbox->accountId)};
  for (const auto& each : inbox->emails) {
    const base::JsonReader email(each);
    auto id = email["id"].string();
    if (const auto reason = reasonForSilence(email, inbox->id); !reason.empty()) {
      networkLogger.info("notifyForEmails: skipping {} — {}", id.value_or("?"), reason);
      continue;
    }
    mail.emails.push_back({.id = std::move(id),
                           .sender = senderText(email),
                           .subject = email["subject"].string().value_or(base::tr("(No subject)"))});
  }
  co_return mail;
}

async::Task<void> NewMailNotifier::announce(NewMail mail) {
  const std::map<std::string, std::string> userInfo{{"inboxName", mail.inboxName},
                                                    {"accountParam", mail.accountParam}};
  if (mail.emails.size() > mostNotifications) {
    networkLogger.info("notifyForEmails: sending one notification for {} emails", mail.emails.size());
    auto content = summaryOf(mail);
    content.categoryIdentifier = summaryCategoryIdentifier;
    content.userInfo = userInfo;
    std::vector<std::string> ids;
    for (auto& email : mail.emails)
      if (email.id)
        ids.push_back(std::move(*email.id));
    auto identifier = NotificationManager::newIdentifier();
    announced_.add(identifier, std::move(ids));
    co_await notifications_.send({std::move(identifier), std::move(content)});
    co_return;
  }
  lookForArchive(); // where it failed so far
  for (auto& email : mail.emails) {
    // Nobody wants to hear of the mail of an account that was left meanwhile.
    const bool cancelled = co_await async::cancelled();
    if (cancelled)
      co_return;
    co_await announceOne(std::move(email), userInfo);
  }
}

async::Task<void> NewMailNotifier::announceOne(NewMail::Email email,
                                               std::map<std::string, std::string> userInfo) {
  networkLogger.info("notifyForEmails: sending notification for {}", email.id.value_or("?"));
  auto identifier = NotificationManager::newIdentifier();
  if (email.id) {
    userInfo.emplace("emailId", *email.id);
    announced_.add(identifier, {*email.id});
  }
  platform::NotificationContent content{.title = std::move(email.sender),
                                        .body = std::move(email.subject),
                                        .categoryIdentifier = categoryIdentifier,
                                        .userInfo = std::move(userInfo)};
  co_await notifications_.send({std::move(identifier), std::move(content)});
}

void NewMailNotifier::emailsChanged(const std::vector<std::string>& updated,
                                    const std::vector<std::string>& destroyed) {
  std::ranges::for_each(destroyed, [this](const auto& id) { takeBack(id); });
  std::ranges::copy_if(updated, std::inserter(changed_, changed_.end()),
                       [this](const auto& id) { return announced_.tellsOf(id); });
}

async::Task<Result<void>> NewMailNotifier::takeBackWhatChanged() {
  std::erase_if(changed_, [this](const auto& id) { return !announced_.tellsOf(id); });
  if (changed_.empty())
    co_return {};
  auto inbox =
      co_await fetch({changed_.begin(), changed_.end()}, {"mailboxIds", "keywords"}, "takeBackWhatChanged");
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return std::unexpected(JMAPError::cancelled());
  if (!inbox) {
    if (!inbox.error().isPassing())
      changed_.clear();
    co_return std::unexpected(std::move(inbox.error()));
  }
  auto gone = std::exchange(changed_, {});
  if (!inbox->isComplete)
    co_return {};
  for (const auto& each : inbox->emails)
    if (const base::JsonReader email(each); reasonForSilence(email, inbox->id).empty())
      gone.erase(email["id"].string().value_or(""));
  std::ranges::for_each(gone, [this](const auto& id) { takeBack(id); });
  co_return {};
}

void NewMailNotifier::takeBack(const std::string& emailId) {
  for (const auto& notification : announced_.remove(emailId))
    notifications_.withdraw(notification);
}

void NewMailNotifier::forget() {
  looking_.cancel();
  actions_.forget();
  announced_.clear();
  changed_.clear();
}

void NewMailNotifier::respond(const platform::NotificationResponse& response) {
  const auto& content = response.request.content;
  announced_.forget(response.request.identifier);
  auto emailId = find(content.userInfo, "emailId");
  if (response.actionIdentifier == platform::NotificationResponse::defaultAction) {
    if (content.categoryIdentifier == summaryCategoryIdentifier)
      open(content.userInfo, "");
    else if (emailId)
      open(content.userInfo, *emailId);
  } else if (emailId) {
    scope_.spawn(perform(response.actionIdentifier, *std::move(emailId),
                         find(content.userInfo, "accountParam").value_or("")));
  }
}

// The notification may be older than the sign-in, and another account's emails may have the same ids.
async::Task<void> NewMailNotifier::perform(std::string action, std::string emailId,
                                           std::string accountParam) {
  const auto account = co_await mailAccount(client_, action);
  if (!account || accountParameter(account->id) != accountParam) {
    networkLogger.error("{}: failed for {}: {}", action, emailId,
                        account ? "it is of another account" : account.error().description());
    co_return;
  }
  if (action == archiveAction)
    co_await actions_.archive(std::move(emailId));
  else if (action == markAsReadAction)
    co_await actions_.markAsRead(std::move(emailId));
  else if (action == deleteAction)
    co_await queries_.deleteEmail(std::move(emailId));
}

void NewMailNotifier::open(const std::map<std::string, std::string>& userInfo,
                           const std::string& page) const {
  const auto inboxName = find(userInfo, "inboxName");
  const auto accountParam = find(userInfo, "accountParam");
  if (!inboxName || !accountParam)
    return;
  if (const auto url = mailPageURL(settings_.baseURL(), *inboxName, page, *accountParam))
    openURL_(*url);
}

} // namespace ondrel::jmap
