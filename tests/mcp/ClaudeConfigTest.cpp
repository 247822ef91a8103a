#include "mcp/ClaudeConfig.h"
#include "mcp/SetupCommand.h"

#include "platform/linux/files/PosixFileStore.h"
#include "support/FakeDesktop.h"
#include "support/TemporaryFolder.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace ondrel::mcp {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

const std::string entry = "\"ondrel\": {\n      \"type\": \"http\",\n      \"url\": "
                          "\"http://localhost:7777/mcp\"\n    }";

// What is in the file after an operation.
class ClaudeConfigTest : public testing::Test {
 protected:
  std::string registered(const std::string& old) {
    content = old;
    EXPECT_TRUE(config.registerServer(7777)) << old;
    return content;
  }

  support::FakeFiles files;
  std::string& content = files.files["/home/.claude.json"];
  ClaudeConfig config{files, files};
};

TEST_F(ClaudeConfigTest, KeepsAllElseSortedAsItIs) {
  EXPECT_EQ(registered(R"( {"z":[1,{"b":[],"a":{}}],"mcpServers":{"zebra":{"url":"u"},"ondrel":{"old":1}},
                            "Ä\"":"é😀\u00e9\/\n","":null,"t":true} )"),
            "{\n"
            "  \"\": null,\n"
            "  \"mcpServers\": {\n"
            "    " +
                entry +
                ",\n"
                "    \"zebra\": {\n      \"url\": \"u\"\n    }\n"
                "  },\n"
                "  \"t\": true,\n"
                "  \"z\": [\n    1,\n    {\n      \"a\": {},\n      \"b\": []\n    }\n  ],\n"
                "  \"Ä\\\"\": \"é😀é/\\n\"\n"
                "}");
  const auto deep = registered("{\"a\":" + std::string(500, '[') + std::string(500, ']') + "}");
  EXPECT_EQ(std::ranges::count(deep, '['), 500);
}

TEST_F(ClaudeConfigTest, KeepsTheDigitsOfNumbers) {
  for (const auto* number : {"-0", "18446744073709551615", "123456789012345678901234567890", "1.10", "1E+05",
                             "3.141592653589793238462643383279502884197", "1e400"}) {
    const auto text = registered(fmt::format(R"({{"n":{}}})", number));
    EXPECT_TRUE(text.ends_with(fmt::format("\"n\": {}\n}}", number))) << number << " became " << text;
    files.writes = 0;
    EXPECT_EQ(registered(text), text);
    EXPECT_EQ(files.writes, 0) << "nothing has changed";
  }
}

TEST_F(ClaudeConfigTest, LeavesAnEntryThatIsRightAsItIs) {
  for (const std::string old :
       {R"({ "z":1, "mcpServers":{"ondrel":{"url":"http://localhost:7777/mcp","type":"http"}},"a":2})",
        R"({"mcpServers":{"ondrel":{"type":"http","headers":{"X":"y"},"url":"http://localhost:7777/mcp"}}})"})
    EXPECT_EQ(registered(old), old);
  EXPECT_EQ(files.writes, 0);
}

TEST_F(ClaudeConfigTest, KeepsHalvesOfSurrogatePairs) {
  const auto text = registered(R"({"\ud83d":"cut \ud83d","b":["\udE00x\ud83d","\\ud83d \ud83d\ude00"]})");
  EXPECT_TRUE(text.contains("\"\\ud83d\": \"cut \\ud83d\"")) << text;
  EXPECT_TRUE(text.contains("\"\\ude00x\\ud83d\",\n    \"\\\\ud83d 😀\"")) << text;
}

TEST_F(ClaudeConfigTest, TakesAnythingElseThanObjectsForEmptyOnes) {
  const auto fresh = "{\n  \"mcpServers\": {\n    " + entry + "\n  }\n}";
  for (const auto* old : {"{}", R"([{"mcpServers":{}}])", "null", R"({"mcpServers":[]})",
                          R"({"mcpServers":null})", R"({"mcpServers":{"ondrel":7}})"})
    EXPECT_EQ(registered(old), fresh) << old;
  files.files.clear();
  EXPECT_TRUE(config.registerServer(7777));
  EXPECT_EQ(files.files["/home/.claude.json"], fresh);
}

TEST_F(ClaudeConfigTest, LeavesAloneWhatItCouldNotKeep) {
  const std::string contents[] = {
      "",
      "{} x",
      "// comment\n{}",
      "\xEF\xBB\xBF{}",
      "{\"a\":\"\xC3\x28\"}",
      R"({"a":1,"a":2})",
      R"({"x":[{"mcpServers":{},"mcpServers":{}}]})",
      "{\"a\":" + std::string(100000, '[') + std::string(100000, ']') + "}",
  };
  for (const auto& old : contents) {
    content = old;
    EXPECT_FALSE(config.registerServer(7777)) << old.substr(0, 100);
    EXPECT_FALSE(config.unregister());
    EXPECT_EQ(content, old);
  }
  files.unreadable = "/home/.claude.json";
  EXPECT_FALSE(config.registerServer(7777));
  EXPECT_EQ(files.writes, 0);
}

TEST_F(ClaudeConfigTest, RemovesItsOwnEntryOnly) {
  content = R"({"b":1,"mcpServers":{"zebra":{},"ondrel":{}},"a":2})";
  EXPECT_TRUE(config.unregister());
  EXPECT_EQ(json::parse(content), json::parse(R"({"b":1,"mcpServers":{"zebra":{}},"a":2})"));
  for (const auto* nothing :
       {R"({"mcpServers":{}, "b":1,"a":1})", R"({"mcpServers":["ondrel"]})", "[]", "7"}) {
    content = nothing;
    EXPECT_TRUE(config.unregister());
    EXPECT_EQ(content, nothing);
  }
  files.files.clear();
  EXPECT_TRUE(config.unregister());
  EXPECT_EQ(files.writes, 1);
}

// A file on the disk, and both ways to get the entry into it.
class HomeTest : public testing::Test, protected platform::Directories {
 protected:
  HomeTest() { fs::create_directory(home_); }

  std::optional<std::string> applicationSupport() const override { return {}; }
  std::optional<std::string> documents() const override { return {}; }
  std::optional<std::string> downloads() const override { return {}; }
  std::string temporary() const override { return {}; }
  std::string home() const override { return home_; }

  // What the command prints that a person pastes into a shell.
  std::string paste(const std::string& command) const {
    folder_.write("script", command + "\n");
    const auto run = fmt::format("cd {}; HOME=\"{}\" sh script > printed 2>&1", folder_.path(), home_);
    EXPECT_NE(std::system(run.c_str()), -1);
    return folder_.content("printed");
  }

  platform::files::PosixFileStore files_;
  support::TemporaryFolder folder_;
  std::string home_ = folder_.file("home's folder");
  const std::string file_ = "home's folder/.claude.json";
  ClaudeConfig config_{*this, files_};
};

TEST_F(HomeTest, TheSetupCommandHasTheSameEffect) {
  for (const std::string old :
       {"{}", "[1]", R"({"mcpServers":7})", R"({"mcpServers":{"ondrel":1,"zebra":{"u":[]}},"b":1,"a":"é😀"})",
        R"({"n":[9223372036854775807,123456789012345678901234567890,0.1,-2.5e-10],"m":null,"t":true})"}) {
    folder_.write(file_, old);
    ASSERT_TRUE(config_.registerServer(7777));
    const auto expected = json::parse(folder_.content(file_));
    folder_.write(file_, old);
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(paste(setupCommand(7777)), "Done\n");
      EXPECT_EQ(json::parse(folder_.content(file_)), expected);
    }
  }
  EXPECT_TRUE(folder_.content(file_).starts_with("{\n  \"m\": null,\n  \"mcpServers\": {\n    " + entry));

  for (const auto* old : {"{ no JSON", R"({"a":"\ud800"})", R"({"a":1e400})", "{\"a\":\"\xff\"}"}) {
    folder_.write(file_, old);
    EXPECT_FALSE(paste(setupCommand(7777)).contains("Done"));
    EXPECT_EQ(folder_.content(file_), old) << "it could not keep it";
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(home_), fs::directory_iterator()), 1);
  EXPECT_FALSE(setupCommand(7777).contains('\n')) << "one line";
}

TEST_F(HomeTest, BothWriteThroughLinksAndKeepTheMode) {
  const auto real = folder_.file("real.json");
  fs::create_symlink("../real.json", folder_.file(file_));
  for (const bool byHand : {false, true}) {
    const auto write = [&] {
      return byHand ? paste(setupCommand(7777)) == "Done\n" : config_.registerServer(7777).has_value();
    };
    fs::remove(real);
    EXPECT_TRUE(write()) << "the link points to a file that isn't there yet";
    EXPECT_EQ(fs::status(real).permissions(), fs::perms(0600));
    folder_.write("real.json", "{}");
    fs::permissions(real, fs::perms(0640));
    EXPECT_TRUE(write());
    EXPECT_TRUE(fs::is_symlink(folder_.file(file_)) && folder_.content("real.json").contains(entry));
    EXPECT_EQ(fs::status(real).permissions(), fs::perms(0640));
  }
  home_.clear();
  EXPECT_FALSE(config_.registerServer(7777) || config_.unregister()) << "nobody's file";
}

} // namespace
} // namespace ondrel::mcp
