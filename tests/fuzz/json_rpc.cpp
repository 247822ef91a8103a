// Any body posted to the JSON-RPC layer, on tools that give the text back: each answer is one of the
// protocol.

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "base/Text.h"
#include "mcp/MCPDispatch.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

namespace {

using namespace ondrel;
using mcp::ToolOutcome;

void require(bool holds) {
  if (!holds)
    std::abort();
}

class Echo final : public mcp::MCPMailTools {
 public:
  async::Task<ToolOutcome> searchEmails(mcp::EmailSearch search) override {
    return answer(search.after.value_or("") + search.before.value_or("") + search.from.value_or("") +
                  search.subject.value_or("") + std::to_string(search.limit));
  }
  async::Task<ToolOutcome> getEmail(std::string id, std::int64_t) override { return answer(std::move(id)); }
  async::Task<ToolOutcome> listMailboxes() override { return answer(""); }
  async::Task<ToolOutcome> openInOndrel(std::string id) override { return fail(std::move(id)); }

 private:
  static async::Task<ToolOutcome> answer(std::string text) {
    require(base::isValidUtf8(text));
    co_return std::vector{mcp::MCPContent{.text = std::move(text)}};
  }
  static async::Task<ToolOutcome> fail(std::string text) { co_return std::unexpected(std::move(text)); }
};

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
  Echo tools;
  mcp::MCPDispatch dispatch(tools);
  bool answered = false;
  async::Scope scope;
  scope.spawn(post(&dispatch, std::string(reinterpret_cast<const char*>(data), size), &answered));
  loop.runUntilIdle();
  require(answered);
  return 0;
}
