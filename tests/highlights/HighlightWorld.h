#pragma once

#include "highlights/HighlightService.h"
#include "highlights/file/HighlightStore.h"
#include "jmap/mail/MailQueries.h"
#include "support/FakeJMAPClient.h"
#include "support/TestShell.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::highlights {

// The program's core on fakes with a tab that shows mail, seen from that tab's page.
class HighlightWorld : public testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  HighlightWorld() {
    tab = shell.focusedModel();
    page = shell.webView(tab);
    clear();
  }

  static app::WindowManager& started(support::TestShell& shell) {
    shell.start();
    return *shell.manager;
  }

  void clear() {
    shell.settle();
    page->evaluations.clear();
    page->evaluationFrames.clear();
    client.sent.clear();
    support::LogCapture::lines().clear();
  }
  static Lines& lines() { return support::LogCapture::lines(); }

  // From a frame of the service's, with its number.
  void postAlone(const boost::json::value& body, std::uint64_t frame = 7,
                 const std::string& origin = "https://app.example.com") {
    page->delegate->didReceiveScriptMessage(
        {"ondrel", body, {frame, origin + "/x", origin, frame == 1}, page});
  }
  void post(const boost::json::value& body) {
    postAlone(body);
    shell.settle();
  }
  static std::string anchor(std::string_view id, std::string_view exact = "words") {
    return boost::json::serialize(boost::json::object{
        {"id", id}, {"exact", exact}, {"prefix", "p"}, {"suffix", "s"}, {"occurrenceIndex", 3}});
  }
  void create(std::string_view id, std::string_view container, std::string_view report = "") {
    post({{"type", "ondrelHighlightCreate"},
          {"anchorJSON", anchor(id)},
          {"containerIndex", container},
          {"report", report}});
  }
  // As a page does that numbers its reports: of its cards each shows its message.
  void showCards(std::string_view report, std::string_view openId, std::string_view cardIndexes,
                 std::string_view cardCount, std::uint64_t frame = 7) {
    postAlone({{"type", "ondrelHighlightContainersChanged"},
               {"count", std::to_string(std::ranges::count(cardIndexes, ',') + 1)},
               {"report", report},
               {"internalId", openId},
               {"cardIndexes", "[" + std::string(cardIndexes) + "]"},
               {"cardCount", cardCount}},
              frame);
    postAlone({{"type", "ondrelHighlightHostReady"}}, frame);
  }

  // What the server answers for the next thread that is asked for. Emails are written "internalId messageId".
  void answerThread(std::initializer_list<std::string_view> emails) {
    boost::json::array ids;
    boost::json::array list;
    for (const auto email : emails) {
      const auto id = email.substr(0, email.find(' '));
      ids.emplace_back(id);
      list.push_back({{"id", id}, {"messageId", boost::json::array{email.substr(id.size() + 1)}}});
    }
    const auto reply = [](const boost::json::object& arguments) {
      return support::FakeJMAPClient::reply({boost::json::serialize(arguments)});
    };
    client.answerNext(reply({{"list", boost::json::array{{{"id", "T"}, {"emailIds", ids}}}}}));
    client.answerNext(reply({{"list", list}}));
  }
  // The page reports that message of a thread as open; to be answered by the server at some time.
  void open(const std::string& threadId, const std::string& internalId) {
    tab->urlString.set("https://app.example.com/mail/Inbox/" + threadId + "." + internalId + "?u=1");
    postAlone({{"type", "ondrelMessageChanged"}, {"internalId", internalId}});
  }
  // A conversation of three messages with one container each is in view.
  void showThread() {
    answerThread({"M1 a@x", "M2 b@x", "M3 c@x"});
    open("T1", "M2");
    post({{"type", "ondrelHighlightContainersChanged"}, {"count", "3"}, {"focusedIndex", "1"}});
    post({{"type", "ondrelHighlightHostReady"}});
    clear();
  }
  void enableTag() { shell.settings.set(settings::keys::highlightTagEnabled, true); }
  std::vector<std::string> ids(const std::string& messageId) {
    std::vector<std::string> result;
    for (const auto& highlight : store.highlights(messageId))
      result.push_back(highlight.id);
    return result;
  }
  // The ids that the page was sent last, for each container.
  std::string sentAnchors() {
    static constexpr std::string_view start = "window.__ondrelApplyHighlights(";
    const auto call = std::find_if(page->evaluations.rbegin(), page->evaluations.rend(),
                                   [](const auto& each) { return each.starts_with(start); });
    if (call == page->evaluations.rend())
      return "nothing";
    const auto end = call->rfind(']') + 1;
    boost::json::array result;
    for (const auto& container :
         boost::json::parse(call->substr(start.size(), end - start.size())).as_array()) {
      boost::json::array idsOfOne;
      for (const auto& each : container.as_array())
        idsOfOne.push_back(each.at("id"));
      result.push_back(std::move(idsOfOne));
    }
    return boost::json::serialize(result);
  }
  // The methods of the requests since the last clear().
  Lines requests() {
    Lines result;
    for (const auto& sent : client.sent)
      result.emplace_back(sent.body.at("methodCalls").at(0).at(0).as_string());
    return result;
  }

  support::TestShell shell;
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, shell.settings, [] {}};
  HighlightStore store{shell.files, shell.files};
  HighlightService service{started(shell), shell.services.messages, mail,
                           store,          shell.settings,          shell.panels};
  std::shared_ptr<web::WindowViewModel> tab;
  std::shared_ptr<support::FakeWebView> page;
};

} // namespace ondrel::highlights
