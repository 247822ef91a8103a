// How long it takes from the bytes of a page of 30 emails with attachments to the rows that are shown. Prints
// one line of JSON with the median in milliseconds, for bench/run.
#include "Bench.h"
#include "MailProgram.h"
#include "async/VirtualEventLoop.h"
#include "support/FakeNotificationCenter.h"

#include <boost/json.hpp>

namespace {

using namespace ondrel;
using namespace ondrel::bench;

namespace json = boost::json;

constexpr int emails = 30;
constexpr int rounds = 2000;
constexpr int warmUpRounds = 100;

// A part as servers describe it (RFC 8621, section 4.1.4).
json::object part(int email, int number) {
  const bool isEmbedded = number % 4 == 3;
  return {{"partId", std::to_string(number + 2)},
          {"blobId", fmt::format("G6b3f0e9a1c5d7e2f4a8b0c1d3e5f7a9b{:04}{:02}", email, number)},
          {"size", 48'213 + 7919 * email + number},
          {"name", fmt::format("Quarterly report {} — überarbeitet ({}).pdf", email, number)},
          {"type", "application/pdf"},
          {"charset", nullptr},
          {"disposition", isEmbedded ? "inline" : "attachment"},
          {"cid", isEmbedded ? json::value("image001.png@01DA5C3B.7E0F1A20") : json::value(nullptr)},
          {"language", nullptr},
          {"location", nullptr}};
}

json::object email(int number) {
  json::array parts;
  for (int i = 0; i < 1 + number % 7; ++i)
    parts.emplace_back(part(number, i));
  json::array from;
  from.emplace_back(json::object{{"name", fmt::format("Ann Example-{}", number)},
                                 {"email", "ann.example@mail.example.org"}});
  return {{"id", fmt::format("M7c1e0d9b8a2f4e6c{:08}", number)},
          {"subject", fmt::format("Re: The figures of the last quarter, and what follows ({})", number)},
          {"from", std::move(from)},
          {"receivedAt", fmt::format("2024-03-{:02}T08:15:{:02}Z", 1 + number, number)},
          {"attachments", std::move(parts)}};
}

std::string reply(std::string_view method, json::object arguments) {
  return fmt::format(R"(["{}",{},"x"])", method, json::serialize(arguments));
}

std::string envelope(const std::string& answers) {
  return fmt::format(R"({{"methodResponses":[{}],"sessionState":"cyrus-0;p-13a9;s-65e1b2c4"}})", answers);
}

std::string page() {
  json::array ids;
  json::array list;
  for (int i = 0; i < emails; ++i) {
    list.emplace_back(email(i));
    ids.emplace_back(list.back().at("id"));
  }
  return envelope(reply("Email/query", {{"accountId", "u1"},
                                        {"queryState", "J41872"},
                                        {"canCalculateChanges", true},
                                        {"position", 0},
                                        {"ids", std::move(ids)},
                                        {"total", 4711}}) +
                  "," +
                  reply("Email/get", {{"accountId", "u1"},
                                      {"state", "J41872"},
                                      {"list", std::move(list)},
                                      {"notFound", json::array()}}));
}

// What the client's requests get.
class Service {
 public:
  platform::HttpResult<platform::HttpResponse> answer(const platform::HttpRequest& request) {
    if (request.method == "GET")
      return support::FakeHttpClient::ok(session_);
    if (!request.body.contains("Email/query"))
      return support::FakeHttpClient::ok(mailboxes_);
    auto response = support::FakeHttpClient::ok(page_);
    answered_ = Clock::now();
    return response;
  }
  std::size_t size() const { return page_.size(); }
  Clock::time_point answered() const { return answered_; }

 private:
  const std::string session_ = R"({"apiUrl":"/api","eventSourceUrl":"/event","downloadUrl":"/download",
    "primaryAccounts":{"urn:ietf:params:jmap:mail":"u1"}})";
  const std::string mailboxes_ = envelope(
      R"(["any",{"state":"1","list":[{"id":"J","role":"junk","name":"Spam"},{"id":"I","role":"inbox","name":"Inbox"}]},"x"])");
  const std::string page_ = page();
  Clock::time_point answered_;
};

async::Task<void> fetch(jmap::MailQueries& mail, Clock::time_point& end, std::size_t& rows) {
  const auto got = co_await mail.fetchAttachments(0, emails);
  end = Clock::now();
  if (!got || got->emailCount != emails)
    fail("the page could not be read");
  rows = got->attachments.size();
}

} // namespace

int main() {
  async::VirtualEventLoop loop;
  support::FakeNotificationCenter center;
  support::FakeHttpClient http;
  Service service;
  http.answer = [&service](const platform::HttpRequest& request) { return service.answer(request); };
  MailProgram program("https://mail.example.org/", http, center);
  loop.runUntilIdle();

  std::vector<double> times;
  std::size_t rows = 0;
  for (int round = -warmUpRounds; round < rounds; ++round) {
    Clock::time_point end;
    async::Scope scope;
    scope.spawn(fetch(program.session().mail(), end, rows));
    loop.runUntilIdle();
    if (scope.active() > 0)
      fail("the page did not come");
    http.requests.clear();
    if (round >= 0)
      times.push_back(Milliseconds(end - service.answered()).count());
  }
  fmt::print("{{\"page\": {:.4f}, \"bytes\": {}, \"rows\": {}}}\n", median(times), service.size(), rows);
  return 0;
}
