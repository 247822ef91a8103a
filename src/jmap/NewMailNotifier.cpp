#include "jmap/NewMailNotifier.h"

#include "async/sleep.h"
#include "jmap/JMAPReading.h"
#include "jmap/MailQueries.h"
#include "jmap/MailRequest.h"
#include "jmap/MessageURL.h"
#include "settings/AppSettings.h"

#include <boost/json/value_from.hpp>

namespace ondrel::jmap {

namespace {

namespace json = boost::json;

constexpr auto categoryIdentifier = "NEW_EMAIL";
constexpr auto deleteAction = "DELETE_EMAIL";

std::optional<std::string> find(const std::map<std::string, std::string>& userInfo, const std::string& key) {
  const auto found = userInfo.find(key);
  return found == userInfo.end() ? std::nullopt : std::optional(found->second);
}

// Without the list of its mailboxes it counts as in the inbox.
bool isOutsideInbox(const json::object& email, const std::string& inboxId) {
  const auto* mailboxIds = objectMember(email, "mailboxIds");
  return mailboxIds && !boolMember(*mailboxIds, inboxId).value_or(false);
}

} // namespace

NewMailNotifier::NewMailNotifier(JMAPClient& client, MailQueries& queries, NotificationManager& notifications,
                                 settings::AppSettings& settings,
                                 std::function<void(const std::string& url)> openURL)
    : client_(client), queries_(queries), notifications_(notifications), settings_(settings),
      openURL_(std::move(openURL)) {
}

NewMailNotifier::~NewMailNotifier() {
  notifications_.setResponseHandler(categoryIdentifier, nullptr);
}

async::Task<void> NewMailNotifier::setUp() {
  co_await notifications_.requestPermission();
  notifications_.registerCategory({categoryIdentifier, {{deleteAction, "Delete", true}}});
  notifications_.setResponseHandler(
      categoryIdentifier, [this](const platform::NotificationResponse& response) { respond(response); });
}

async::Task<Result<void>> NewMailNotifier::notifyForEmails(std::vector<std::string> ids) {
  const auto session = co_await client_.fetchSessionData();
  if (!session)
    co_return std::unexpected(session.error());
  const auto accountId = mailAccountId(*session);
  if (!accountId) {
    networkLogger.error("notifyForEmails: no mail account ID in JMAP session");
    co_return {};
  }
  const auto reply = co_await ask(client_, *session,
                                  jmapRequest("Email/get",
                                              {{"accountId", *accountId},
                                               {"ids", json::value_from(ids)},
                                               {"properties", {"from", "subject", "mailboxIds"}}},
                                              "g0"));
  if (!reply)
    co_return std::unexpected(reply.error());
  const auto* list = answeredList(*reply, 0);
  if (!list) {
    networkLogger.error("notifyForEmails: unexpected Email/get response format");
    co_return {};
  }

  const auto inboxId = co_await queries_.fetchInboxMailboxId();
  const auto inboxName = queries_.mailboxes().inboxName.value_or("Inbox");
  for (const auto* email : objects(*list)) {
    // Nobody wants to hear of the mail of an account that was left meanwhile.
    const bool cancelled = co_await async::cancelled();
    if (cancelled)
      co_return std::unexpected(JMAPError::cancelled());
    const auto id = stringMember(*email, "id");
    if (inboxId && isOutsideInbox(*email, *inboxId)) {
      networkLogger.info("notifyForEmails: skipping {} — not in inbox", id.value_or("?"));
      continue;
    }
    networkLogger.info("notifyForEmails: sending notification for {}", id.value_or("?"));
    std::map<std::string, std::string> userInfo{{"inboxName", inboxName},
                                                {"accountParam", accountParameter(*accountId)}};
    if (id)
      userInfo.emplace("emailId", *id);
    co_await notifications_.send(senderText(*email), stringMember(*email, "subject").value_or("(No subject)"),
                                 categoryIdentifier, std::move(userInfo));
  }
  co_return {};
}

void NewMailNotifier::respond(const platform::NotificationResponse& response) {
  const auto& userInfo = response.request.content.userInfo;
  if (response.actionIdentifier == platform::NotificationResponse::defaultAction)
    openEmail(userInfo);
  else if (response.actionIdentifier == deleteAction)
    if (auto emailId = find(userInfo, "emailId"))
      scope_.spawn(queries_.deleteEmail(*std::move(emailId)));
}

void NewMailNotifier::openEmail(const std::map<std::string, std::string>& userInfo) const {
  const auto emailId = find(userInfo, "emailId");
  const auto inboxName = find(userInfo, "inboxName");
  const auto accountParam = find(userInfo, "accountParam");
  if (!emailId || !inboxName || !accountParam)
    return;
  if (const auto url = mailPageURL(settings_.baseURL(), *inboxName, *emailId, *accountParam))
    openURL_(*url);
}

} // namespace ondrel::jmap
