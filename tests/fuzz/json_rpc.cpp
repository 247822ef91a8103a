// Any body posted to the JSON-RPC layer, on an account that answers: each answer is one of the protocol, and
// so is each request to the service.

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "base/Json.h"
#include "base/Text.h"
#include "jmap/mail/MailQueries.h"
#include "mcp/MCPDispatch.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeTextFormatting.h"
#include "support/TestSite.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

namespace {

using namespace ondrel;

void require(bool holds) {
  if (!holds)
    std::abort();
}

void check(const mcp::RPCAnswer& answer) {
  const auto& [status, body] = answer;
  if (status == 202) {
    require(body.empty());
    return;
  }
  require(status == 200);
  const auto json = boost::json::parse(body);
  const auto& response = json.as_object();
  require(response.at("jsonrpc").as_string() == "2.0");
  require(response.contains("result") != response.contains("error"));
  if (response.contains("result"))
    require(response.contains("id"));
  else
    require(response.contains("id") == (response.at("error").as_object().at("code").as_int64() != -32700));
}

async::Task<void> post(mcp::MCPDispatch* dispatch, std::string body, bool* answered) {
  const auto answer = co_await dispatch->handleRPC(std::move(body));
  check(answer);
  *answered = true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  async::VirtualEventLoop loop;
  support::FakeJMAPClient client;
  client.answer("Email/query", R"({"methodResponses":[["Email/get",{"list":[{"id":"M1"}]},"g0"]]})");
  client.answer("Mailbox/get", R"({"methodResponses":[["Mailbox/get",{"list":[]},"m0"]]})");
  support::FakeDefaults defaults;
  settings::AppSettings settings(defaults, support::testSite());
  jmap::MailQueries mail(client, settings, [] {});
  support::FakeTextFormatting formatting;
  mcp::MCPDispatch dispatch(
      {.mail = mail, .formatting = formatting, .openURL = [](const auto&) {}, .activate = [] {}});
  bool answered = false;
  async::Scope scope;
  scope.spawn(post(&dispatch, std::string(reinterpret_cast<const char*>(data), size), &answered));
  loop.runUntilIdle();
  require(answered);
  for (const auto& sent : client.sent)
    require(base::isValidUtf8(base::jsonText(sent.body)));
  return 0;
}
