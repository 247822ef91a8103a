#include "mcp/ClaudeConfig.h"
#include "mcp/SetupCommand.h"

#include "platform/linux/PosixFileStore.h"
#include "support/FakeDesktop.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace ondrel::mcp {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

std::string entry(int port, const std::string& indent = "    ") {
  return fmt::format(
      "\"ondrel\": {{\n{0}  \"type\": \"http\",\n{0}  \"url\": \"http://localhost:{1}/mcp\"\n{0}}}", indent,
      port);
}

// What is in the file after an operation.
class ClaudeConfigTest : public testing::Test {
 protected:
  std::string registered(const std::string& old) {
    files.files[path] = old;
    EXPECT_TRUE(config.registerServer(7777)) << old;
    return files.files[path];
  }
  std::string unregistered(const std::string& old) {
    files.files[path] = old;
    EXPECT_TRUE(config.unregister()) << old;
    return files.files[path];
  }

  const std::string path = "/home/.claude.json";
  support::FakeFiles files;
  ClaudeConfig config{files, files};
};

TEST_F(ClaudeConfigTest, KeepsAllElseSortedAsItIs) {
  EXPECT_EQ(registered(R"( {"z":[1,{"b":[],"a":{}}],"mcpServers":{"zebra":{"url":"u"},"ondrel":{"old":1}},
                            "Ä":"é😀\u00e9\/\n","":null,"t":true} )"),
            "{\n"
            "  \"\": null,\n"
            "  \"mcpServers\": {\n"
            "    " +
                entry(7777) +
                ",\n"
                "    \"zebra\": {\n      \"url\": \"u\"\n    }\n"
                "  },\n"
                "  \"t\": true,\n"
                "  \"z\": [\n    1,\n    {\n      \"a\": {},\n      \"b\": []\n    }\n  ],\n"
                "  \"Ä\": \"é😀é/\\n\"\n"
                "}");
}

TEST_F(ClaudeConfigTest, KeepsTheDigitsOfNumbers) {
  for (const auto* number :
       {"0", "-0", "1", "9223372036854775807", "-9223372036854775808", "18446744073709551615",
        "123456789012345678901234567890", "0.1", "1.10", "1.0", "1e5", "1E+05", "-2.5e-10",
        "0.30000000000000004", "3.141592653589793238462643383279502884197", "1e308", "5e-324", "1e400",
        "1735689600000.123"}) {
    const auto text = registered(fmt::format(R"({{"n":{}}})", number));
    EXPECT_TRUE(text.ends_with(fmt::format("\"n\": {}\n}}", number))) << number << " became " << text;
    EXPECT_EQ(registered(text), text);
  }
}

TEST_F(ClaudeConfigTest, TakesAnythingElseThanObjectsForEmptyOnes) {
  const auto fresh = "{\n  \"mcpServers\": {\n    " + entry(7777) + "\n  }\n}";
  for (const auto* old : {"{}", "[]", R"([{"mcpServers":{}}])", "7", "null", R"("x")", R"({"mcpServers":[]})",
                          R"({"mcpServers":null})", R"({"mcpServers":{"ondrel":7}})"})
    EXPECT_EQ(registered(old), fresh) << old;
  files.files.clear();
  EXPECT_TRUE(config.registerServer(7777));
  EXPECT_EQ(files.files[path], fresh);
}

TEST_F(ClaudeConfigTest, LeavesAloneWhatItCouldNotKeep) {
  const std::string contents[] = {
      "",
      " \n",
      "{",
      "{} x",
      "{'a':1}",
      R"({"a":1,})",
      "// comment\n{}",
      "\xEF\xBB\xBF{}",
      "{\"a\":\"\xC3\x28\"}",
      R"({"a":"\ud800"})",
      R"({"a":NaN})",
      R"({"a":01})",
      R"({"a":1,"a":2})",
      R"({"x":[{"mcpServers":{},"mcpServers":{}}]})",
      "{\"a\":" + std::string(100000, '[') + std::string(100000, ']') + "}",
  };
  for (const auto& content : contents) {
    files.files[path] = content;
    files.writes = 0;
    EXPECT_FALSE(config.registerServer(7777)) << content.substr(0, 100);
    EXPECT_FALSE(config.unregister());
    EXPECT_EQ(files.writes, 0);
    EXPECT_EQ(files.files[path], content);
  }
  files.unreadable = path;
  EXPECT_FALSE(config.registerServer(7777));
  EXPECT_EQ(files.writes, 0);
}

TEST_F(ClaudeConfigTest, RemovesItsOwnEntryOnly) {
  EXPECT_EQ(unregistered(R"({"b":1,"mcpServers":{"zebra":{},"ondrel":{}},"a":2})"),
            "{\n  \"a\": 2,\n  \"b\": 1,\n  \"mcpServers\": {\n    \"zebra\": {}\n  }\n}");
  EXPECT_EQ(unregistered(R"({"mcpServers":{"ondrel":null}})"), "{\n  \"mcpServers\": {}\n}");
  files.writes = 0;
  for (const auto* nothing : {"{}", R"({"mcpServers":{}, "b":1,"a":1})", R"({"mcpServers":["ondrel"]})",
                              R"({"ondrel":{}})", "[]", "7"})
    EXPECT_EQ(unregistered(nothing), nothing);
  files.files.clear();
  EXPECT_TRUE(config.unregister());
  EXPECT_EQ(files.writes, 0);
}

TEST_F(ClaudeConfigTest, WritesOnlyWhatChanges) {
  const auto text = registered(R"({"b":1})");
  files.writes = 0;
  EXPECT_EQ(registered(text), text);
  EXPECT_EQ(files.writes, 0);
}

TEST_F(ClaudeConfigTest, KeepsDeepSettings) {
  const auto deep = std::string(500, '[') + std::string(500, ']');
  const auto text = registered("{\"a\":" + deep + "}");
  EXPECT_EQ(std::ranges::count(text, '['), 500);
}

// A home of its own on the disk, with the folder gone afterwards.
class HomeTest : public testing::Test, protected platform::Directories {
 protected:
  HomeTest() : home_(mkdtemp(template_)) {}
  ~HomeTest() override { fs::remove_all(template_); }

  std::optional<std::string> applicationSupport() const override { return std::nullopt; }
  std::optional<std::string> documents() const override { return std::nullopt; }
  std::optional<std::string> downloads() const override { return std::nullopt; }
  std::string temporary() const override { return "/tmp"; }
  std::string home() const override { return home_; }

  std::string file(const std::string& name = ".claude.json") const { return home_ + "/" + name; }
  void write(const std::string& content, const std::string& name = ".claude.json") const {
    std::ofstream(file(name)) << content;
  }
  std::string content(const std::string& name = ".claude.json") const {
    std::ostringstream text;
    text << std::ifstream(file(name)).rdbuf();
    return text.str();
  }
  unsigned mode(const std::string& name = ".claude.json") const {
    struct stat status{};
    return stat(file(name).c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
  }
  std::size_t filesInHome() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(home_), fs::directory_iterator()));
  }
  // Pastes the command into a shell; what it prints.
  std::string paste(const std::string& command) const {
    // Through a file of its own, as the shell would get it from a person.
    const auto script = home_ + "/.script";
    std::ofstream(script) << command << "\n";
    auto* pipe = popen(fmt::format("HOME=\"{}\" sh \"{}\" 2>&1", home_, script).c_str(), "r");
    std::string printed;
    for (int c = 0; (c = fgetc(pipe)) != EOF;)
      printed += static_cast<char>(c);
    pclose(pipe);
    fs::remove(script);
    return printed;
  }

  platform::PosixFileStore files;
  char template_[32] = "/tmp/ondrel home's-XXXXXX";
  std::string home_;
};

TEST_F(HomeTest, WritesThroughLinksAndKeepsTheMode) {
  ClaudeConfig config(*this, files);
  ASSERT_TRUE(config.registerServer(7777));
  EXPECT_EQ(mode(), 0600U) << "a new one";

  fs::remove(file());
  fs::create_directory(file("dot files"));
  write(R"({"a":1})", "dot files/real.json");
  fs::permissions(file("dot files/real.json"), fs::perms(0644));
  fs::create_symlink("dot files/link.json", file());
  fs::create_symlink("real.json", file("dot files/link.json"));
  ASSERT_TRUE(config.registerServer(7777));
  EXPECT_TRUE(fs::is_symlink(file()));
  EXPECT_TRUE(fs::is_symlink(file("dot files/link.json")));
  EXPECT_EQ(content("dot files/real.json"),
            "{\n  \"a\": 1,\n  \"mcpServers\": {\n    " + entry(7777) + "\n  }\n}");
  EXPECT_EQ(mode("dot files/real.json"), 0644U);

  fs::remove(file("dot files/real.json"));
  ASSERT_TRUE(config.registerServer(7777)) << "the link points to a file that isn't there yet";
  EXPECT_TRUE(content("dot files/real.json").contains("7777"));
}

TEST_F(HomeTest, TellsWhenItMayNotWrite) {
  ClaudeConfig config(*this, files);
  write("{}");
  fs::permissions(file(), fs::perms(0400));
  EXPECT_FALSE(config.registerServer(7777));
  EXPECT_EQ(content(), "{}");
  fs::remove(file());
  fs::create_symlink(".claude.json", file());
  EXPECT_FALSE(config.registerServer(7777)) << "a link to itself";
  fs::remove(file());
  fs::create_directory(file());
  EXPECT_FALSE(config.registerServer(7777));
  EXPECT_EQ(filesInHome(), 1U);
  home_.clear();
  EXPECT_FALSE(config.registerServer(7777));
  EXPECT_FALSE(config.unregister());
  home_ = "/dev/null/nowhere";
  EXPECT_FALSE(config.registerServer(7777));
}

TEST_F(HomeTest, TheSetupCommandHasTheSameEffect) {
  ClaudeConfig config(*this, files);
  for (const std::string old :
       {"", "{}", "[1]", R"({"mcpServers":7})",
        R"({"mcpServers":{"ondrel":1,"zebra":{"u":[]}},"b":1,"a":"é😀"})",
        R"({"n":[9223372036854775807,123456789012345678901234567890,0.1,-2.5e-10],"m":null,"t":true})"}) {
    const auto prepare = [&] {
      fs::remove(file());
      if (!old.empty())
        write(old);
    };
    prepare();
    ASSERT_TRUE(config.registerServer(8123));
    const auto expected = content();
    prepare();
    EXPECT_EQ(paste(setupCommand(8123)), "Done\n");
    EXPECT_EQ(json::parse(content()), json::parse(expected));
    EXPECT_EQ(paste(setupCommand(8123)), "Done\n");
    EXPECT_EQ(json::parse(content()), json::parse(expected)) << "again";
    EXPECT_EQ(filesInHome(), 1U);
  }
  EXPECT_TRUE(content().starts_with("{\n  \"m\": null,\n  \"mcpServers\": {\n    " + entry(8123)))
      << content();
}

TEST_F(HomeTest, TheSetupCommandLeavesAloneWhatItCouldNotKeep) {
  for (const auto* old : {"{ no JSON", R"({"a":"\ud800"})", R"({"a":1e400})", "{\"a\":\"\xff\"}"}) {
    write(old);
    EXPECT_FALSE(paste(setupCommand(8123)).contains("Done"));
    EXPECT_EQ(content(), old);
    EXPECT_EQ(filesInHome(), 1U);
  }
  write("{}");
  fs::permissions(file(), fs::perms(0640));
  fs::rename(file(), file("real.json"));
  fs::create_symlink("real.json", file());
  EXPECT_EQ(paste(setupCommand(8123)), "Done\n");
  EXPECT_TRUE(fs::is_symlink(file()));
  EXPECT_EQ(mode("real.json"), 0640U);
  EXPECT_FALSE(setupCommand(8123).contains('\n')) << "one line";
}

} // namespace
} // namespace ondrel::mcp
