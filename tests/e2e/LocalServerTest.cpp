// An assistant of this machine at the user's mail, through the program's local server.
#include "UserHandsTest.h"
#include "support/Loopback.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <filesystem>

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

class LocalServerTest : public UserHandsTest {
 protected:
  void SetUp() override {
    UserHandsTest::SetUp();
    write(configFile(), R"({"theme": "dark", "mcpServers": {"other": {"type": "stdio"}}})");
  }
  std::unique_ptr<Process> startWith(bool enabled) {
    write(defaultsFile(),
          json::serialize(json::object{{"_mcpServerEnabled", enabled}, {"_mcpServerPort", port_}}));
    auto program = start({}, {{"HOME", home()}});
    EXPECT_TRUE(waitForPage(*program)) << program->output();
    return program;
  }

  std::string posted(const json::object& request) const {
    const auto body = json::serialize(request);
    return support::answerAt(port_, "POST /mcp HTTP/1.1\r\nHost: localhost:" + std::to_string(port_) +
                                        "\r\nContent-Type: application/json\r\nContent-Length: " +
                                        std::to_string(body.size()) + "\r\n\r\n" + body);
  }
  // The result of a request, or what came instead of one.
  json::value result(const std::string& method, const json::object& params = {}) {
    const auto answer =
        posted({{"jsonrpc", "2.0"}, {"id", ++lastId_}, {"method", method}, {"params", params}});
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: ";
    const auto body = answer.find("\r\n\r\n");
    if (!answer.starts_with(head) || body == answer.npos)
      return {{"text", "no answer: " + answer}};
    const auto response = json::parse(answer.substr(body + 4));
    EXPECT_EQ(response.at("id"), lastId_);
    const auto* found = response.as_object().if_contains("result");
    return found ? *found : json::value{{"text", json::serialize(response)}};
  }
  // The text of a tool that has done its work.
  std::string text(const std::string& tool, const json::object& arguments = {}) {
    const auto given = result("tools/call", {{"name", tool}, {"arguments", arguments}});
    const auto* content = given.as_object().if_contains("content");
    if (!content || given.at("isError").as_bool())
      return "failed: " + json::serialize(given);
    return std::string(content->at(0).at("text").as_string());
  }

  fs::path home() const { return profile / "home"; }
  fs::path configFile() const { return home() / ".claude.json"; }
  json::value config() const { return json::parse(read(configFile())); }

  const int port_ = support::freePort();

 private:
  int lastId_ = 0;
};

TEST_F(LocalServerTest, AnAssistantFindsReadsAndOpensMail) {
  const auto program = startWith(true);
  ASSERT_NE(signIn(*program), 0U);
  EXPECT_EQ(config(), json::parse(R"({"theme": "dark", "mcpServers": {"other": {"type": "stdio"}, "ondrel":
                            {"type": "http", "url": "http://localhost:)" +
                                  std::to_string(port_) + R"(/mcp"}}})"));

  EXPECT_EQ(result("initialize").at("protocolVersion"), "2024-11-05");
  EXPECT_EQ(posted({{"jsonrpc", "2.0"}, {"method", "notifications/initialized"}}),
            "HTTP/1.1 202 Accepted\r\nContent-Type: application/json\r\nContent-Length: 0\r\n"
            "Connection: close\r\n\r\n");
  EXPECT_EQ(result("tools/list").at("tools").as_array().size(), 4U);

  EXPECT_TRUE(text("list_mailboxes").starts_with("Archive [archive] — "));
  const auto found = text("search_emails", {{"subject", "spring workshop"}, {"from", "Henrik"}});
  ASSERT_TRUE(found.contains("\nFrom: Henrik Solberg\nSubject: Plans for the spring workshop\nDate: "))
      << found;
  const auto id = found.substr(4, found.find('\n') - 4);
  EXPECT_TRUE(text("get_email", {{"id", id}}).contains("\n\nTools are no trouble. I can bring the planes"));
  EXPECT_EQ(text("search_emails", {{"subject", "nobody has written this"}}),
            "No emails found matching the search criteria.");

  EXPECT_EQ(text("open_in_ondrel", {{"id", id}}), "Opened email " + id + " in Ondrel.");
  EXPECT_TRUE(sessionBecomes([&](const auto& saved) {
    return saved.windows.at(0).tabs.at(0).urlString.contains("." + id + "?u=");
  })) << read(sessionFile());
  EXPECT_EQ(windows().size(), 1U) << "in the window that shows mail";
  EXPECT_EQ(quit(*program), 0);
  EXPECT_FALSE(program->output().contains("Tools are no trouble")) << "the log tells no mail";
}

TEST_F(LocalServerTest, ForgetsTheAssistantWhenItIsSwitchedOff) {
  EXPECT_EQ(quit(*startWith(true)), 0);
  EXPECT_TRUE(config().at("mcpServers").as_object().contains("ondrel"))
      << "the end of the program is no reason";

  const auto program = startWith(false);
  EXPECT_EQ(config(), json::parse(R"({"theme": "dark", "mcpServers": {"other": {"type": "stdio"}}})"));
  EXPECT_EQ(support::answerAt(port_, "POST /mcp HTTP/1.1\r\n\r\n{}"), "") << "nobody listens";
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
