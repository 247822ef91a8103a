#pragma once

#include "async/sleep.h"
#include "jmap/protocol/JMAPClient.h"

#include <boost/json/array.hpp>

#include <deque>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::support {

// Answers requests with what the test has set, without a network. A request that nothing is set for fails as
// one that the server rejects.
class FakeJMAPClient final : public jmap::JMAPClient {
 public:
  struct Sent {
    boost::json::object body;
    std::string token;
  };

  // For the next request whatever it asks; used before answers by method.
  void answerNext(std::string json) { next_.emplace_back(std::move(json)); }
  void failNext(jmap::JMAPError error) { next_.emplace_back(std::unexpected(std::move(error))); }
  // For requests whose first call is of that method: one answer each in the order of setting, the last again
  // and again.
  void answer(const std::string& method, std::string json) {
    byMethod_[method].emplace_back(std::move(json));
  }
  // In place of all earlier answers to that method.
  void answerOnly(const std::string& method, std::string json) {
    byMethod_[method].clear();
    answer(method, std::move(json));
  }
  void fail(const std::string& method, jmap::JMAPError error) {
    byMethod_[method].emplace_back(std::unexpected(std::move(error)));
  }
  // A reply of these arguments objects.
  static std::string reply(std::initializer_list<std::string_view> arguments) {
    std::string text;
    for (const auto argument : arguments)
      text.append(text.empty() ? "" : ",").append(R"(["any",)").append(argument).append(R"(,"any"])");
    return R"({"methodResponses":[)" + text + R"(],"sessionState":"s"})";
  }

  async::Task<jmap::Result<jmap::JMAPSessionData>> fetchSessionData() override {
    ++sessionFetches;
    co_await async::nextTurn();
    co_return session;
  }
  async::Task<jmap::Result<std::string>> currentAccessToken() override {
    ++tokenReads;
    co_await async::nextTurn();
    co_return token;
  }
  async::Task<bool> isSignInShown() override {
    co_await async::nextTurn();
    co_return signInShown;
  }
  async::Task<jmap::Result<jmap::JMAPReply>> send(jmap::JMAPSessionData, std::string usedToken,
                                                  boost::json::object body) override {
    auto& answers = next_.empty() ? byMethod_[firstMethod(body)] : next_;
    auto answer = answers.empty() ? std::unexpected(jmap::JMAPError::badResponse()) : answers.front();
    if (!answers.empty() && (&answers == &next_ || answers.size() > 1))
      answers.pop_front();
    sent.push_back({std::move(body), std::move(usedToken)});
    const bool slept = co_await async::sleep(delay);
    if (!slept)
      co_return std::unexpected(jmap::JMAPError::cancelled());
    if (!answer)
      co_return std::unexpected(answer.error());
    co_return jmap::JMAPReply::of(*answer);
  }

  jmap::Result<jmap::JMAPSessionData> session = jmap::JMAPSessionData{
      .apiUrl = "https://api.example.com/jmap/api/",
      .eventSourceUrl = "https://api.example.com/jmap/event/",
      .downloadUrl = "https://api.example.com/jmap/download/{accountId}/{blobId}/{name}",
      .primaryAccounts = {{std::string(jmap::mailCapability), "u123"}}};
  jmap::Result<std::string> token = "token";
  bool signInShown = false;
  async::Duration delay{0}; // of each request

  std::vector<Sent> sent;
  int sessionFetches = 0;
  int tokenReads = 0;

 private:
  using Answers = std::deque<jmap::Result<std::string>>;

  static std::string firstMethod(const boost::json::object& body) {
    return std::string(body.at("methodCalls").as_array().at(0).as_array().at(0).as_string());
  }

  Answers next_;
  std::map<std::string, Answers> byMethod_;
};

} // namespace ondrel::support
