#include "integrations/ServerLocationChecker.h"

#include "async/Deadline.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "jmap/protocol/JMAPClient.h"
#include "platform/Application.h"
#include "platform/HttpClient.h"
#include "platform/Panels.h"
#include "settings/AppSettings.h"

#include <algorithm>
#include <utility>

namespace ondrel::integrations {

namespace {

// The user waits, and half of the answer is there. Mostly the session has been fetched long ago; without a
// token it would take a minute.
constexpr std::chrono::seconds longestSession{8};

std::string_view firstPiece(std::string_view text, char separator) {
  text.remove_prefix(std::min(text.find_first_not_of(separator), text.size()));
  return text.substr(0, text.find(separator));
}

const char* place(std::string_view siteCode) {
  static constexpr std::pair<std::string_view, const char*> places[] = {
      {"phl", base::trMark("Philadelphia, USA")}, {"ams", base::trMark("Amsterdam, Netherlands")}};
  const auto* found = std::ranges::find(places, siteCode, [](const auto& each) { return each.first; });
  return base::tr(found == std::end(places) ? base::trMark("Unknown location") : found->second);
}

std::string hostOf(const std::string& url) {
  const auto parsed = base::Url::parse(url);
  return parsed ? parsed->host().value_or("") : "";
}

async::Task<std::optional<std::string>> accountHost(jmap::JMAPClient& session) {
  // Without a sign-in the session is long in coming.
  const bool nobodyIsSignedIn = co_await session.isSignInShown();
  if (nobodyIsSignedIn)
    co_return std::nullopt;
  const auto data = co_await async::withDeadline(longestSession, session.fetchSessionData());
  auto host = data && *data ? hostOf((*data)->apiUrl) : std::string();
  co_return host.empty() ? std::nullopt : std::optional(std::move(host));
}

} // namespace

std::string ServerLocationChecker::description(CheckError error) {
  return error == CheckError::missingHeader ? base::tr("The server didn't return location information.")
                                            : base::tr("Unexpected response from the server.");
}

void ServerLocationChecker::show() {
  if (task_.done())
    task_ = scope_.spawn(checkAndShow());
}

async::Task<void> ServerLocationChecker::checkAndShow() {
  const auto location = co_await check(services_.session);
  co_await services_.panels.runAlert({.messageText = base::tr("Server Location"),
                                      .informativeText = location ? display(*location) : location.error()},
                                     services_.application.frontWindow());
}

async::Task<std::expected<ServerLocationChecker::Location, std::string>>
ServerLocationChecker::check(jmap::JMAPClient* jmapSession) {
  const auto& address = services_.settings.baseURL();
  if (!base::Url::parse(address))
    co_return std::unexpected(description(CheckError::badResponse));
  Location location{.frontendHost = hostOf(address)};
  const auto response = co_await services_.http.send({.method = "HEAD", .url = address});
  if (!response)
    co_return std::unexpected(response.error().inWords());
  auto frontend = platform::headerValue(response->headers, "x-frontend");
  if (!frontend)
    co_return std::unexpected(description(CheckError::missingHeader));
  location.frontendValue = std::move(*frontend);
  if (jmapSession)
    location.accountHost = co_await accountHost(*jmapSession);
  co_return location;
}

// The service puts a "-" behind the code in its header, and a "." in its host names.
std::string ServerLocationChecker::display(const Location& location) {
  // TRANSLATORS: a place and two technical names of a server
  auto text = base::trFormat("Frontend: {0}\n({1} — {2})", place(firstPiece(location.frontendValue, '-')),
                             base::shortDisplayLine(location.frontendValue),
                             base::shortDisplayLine(location.frontendHost));
  if (location.accountHost)
    text += "\n\n" + base::trFormat("Account data: {0}\n({1})", place(firstPiece(*location.accountHost, '.')),
                                    base::shortDisplayLine(*location.accountHost));
  return text;
}

} // namespace ondrel::integrations
