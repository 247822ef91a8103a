#include "start/CommandLine.h"
#include "start/SiteFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace ondrel::start {
namespace {

TEST(CommandLine, SortsArguments) {
  const auto parse = [](std::vector<std::string> arguments) { return CommandLine::parse(arguments); };
  EXPECT_EQ(parse({"mailto:a@b", "email://x", ""})->urls,
            (std::vector<std::string>{"mailto:a@b", "email://x", ""}));
  EXPECT_EQ(parse({"--", "--demo"})->urls, (std::vector<std::string>{"--demo"}));
  EXPECT_TRUE(parse({"--gapplication-service"})->startedByBus);
  EXPECT_EQ(parse({"--version"})->action, CommandLine::Action::printVersion);
  EXPECT_EQ(parse({"-h"})->action, CommandLine::Action::printHelp);
  EXPECT_TRUE(parse({"--toggle"})->toggle);
  EXPECT_TRUE(parse({"--demo"})->demo);
  EXPECT_EQ(parse({"--demo"})->demoProfile, std::nullopt);
  EXPECT_EQ(parse({"--demo=/x y"})->demoProfile, "/x y");
  for (const auto* wrong : {"--demo=", "--Version", "-x", "-"})
    EXPECT_FALSE(parse({wrong})) << wrong;
}

TEST(SiteFile, SaysWhatIsWrongAndWhere) {
  const auto folder =
      std::filesystem::temp_directory_path() / ("ondrel-site-test-" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  const auto path = (folder / "site.json").string();
  unsetenv("ONDREL_SITE");
  EXPECT_EQ(loadSite(folder.string()).error(),
            "can't read the service's addresses from " + path + ": No such file or directory");
  const auto problem = [&](const std::string& content) {
    std::ofstream(path) << content;
    const auto site = loadSite(folder.string());
    return site ? std::string() : site.error();
  };
  EXPECT_TRUE(problem("").contains(path));
  EXPECT_TRUE(problem("{").contains("not JSON"));
  EXPECT_TRUE(problem("{}").contains("\"WebAppBaseURL\" is missing"));
  setenv("ONDREL_SITE", folder.c_str(), 1);
  EXPECT_TRUE(loadSite("/nowhere").error().contains("directory"));
  unsetenv("ONDREL_SITE");
  std::filesystem::remove_all(folder);
}

} // namespace
} // namespace ondrel::start
