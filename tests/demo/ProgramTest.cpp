#include "Client.h"
#include "demo/PortsFile.h"

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>

namespace ondrel::demo {

namespace {

using testing::HasSubstr;

// The program itself, with its standard input and output held by pipes.
class Program {
 public:
  explicit Program(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv{ONDREL_DEMO_SERVICE};
    for (const auto& argument : arguments)
      argv.push_back(argument.c_str());
    argv.push_back(nullptr);
    process_.reset(
        g_subprocess_newv(argv.data(),
                          GSubprocessFlags(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                           G_SUBPROCESS_FLAGS_STDERR_PIPE),
                          nullptr));
  }
  ~Program() {
    terminate();
    exitStatus();
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // The line that it prints when it is ready.
  boost::json::value ready() {
    const ObjectPtr<GDataInputStream> lines(
        g_data_input_stream_new(g_subprocess_get_stdout_pipe(process_.get())));
    g_filter_input_stream_set_close_base_stream(G_FILTER_INPUT_STREAM(lines.get()), FALSE);
    const StringPtr line(g_data_input_stream_read_line(lines.get(), nullptr, nullptr, nullptr));
    return line ? boost::json::parse(line.get()) : boost::json::value();
  }
  std::string errorLine() {
    const ObjectPtr<GDataInputStream> lines(
        g_data_input_stream_new(g_subprocess_get_stderr_pipe(process_.get())));
    const StringPtr line(g_data_input_stream_read_line(lines.get(), nullptr, nullptr, nullptr));
    return line ? line.get() : "";
  }
  void closeInput() { g_output_stream_close(g_subprocess_get_stdin_pipe(process_.get()), nullptr, nullptr); }
  void terminate() { g_subprocess_send_signal(process_.get(), SIGTERM); }
  // Waits for the end. -1 when a signal killed it.
  int exitStatus() {
    g_subprocess_wait(process_.get(), nullptr, nullptr);
    return g_subprocess_get_if_exited(process_.get()) ? g_subprocess_get_exit_status(process_.get()) : -1;
  }

 private:
  ObjectPtr<GSubprocess> process_;
};

class ProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    const StringPtr made(g_dir_make_tmp("ondrel-demo-XXXXXX", nullptr));
    ASSERT_TRUE(made);
    folder_ = made.get();
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  boost::json::value readJson(const std::string& name) const {
    std::ifstream file(folder_ / name);
    return boost::json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
  }

  std::filesystem::path folder_;
};

} // namespace

TEST_F(ProgramTest, WritesTheAddressesThatItServes) {
  const auto siteFile = (folder_ / "site.json").string();
  Program program({"--site-file", siteFile});
  const auto ready = program.ready();
  EXPECT_EQ(ready.at("siteFile"), boost::json::value(siteFile));
  const auto site = readJson("site.json");
  EXPECT_EQ(site.at("WebAppBaseURL").at("production"), ready.at("web"));
  for (const char* key :
       {"JMAPSessionURL", "UserContentDomainSuffix", "ServiceDomainFragment", "DevUserCapability",
        "AnnouncementFeedURL", "ProjectSiteURL", "ProjectFAQURL", "DonationURL", "SupportAddress"}) {
    EXPECT_TRUE(site.as_object().contains(key)) << key;
  }
  const auto page = fetch({std::string(ready.at("web").as_string())});
  EXPECT_EQ(page.status, 200u);
  const auto beta = fetch({std::string(site.at("WebAppBaseURL").at("beta").as_string())});
  EXPECT_EQ(beta.body, page.body);
  program.terminate();
  EXPECT_EQ(program.exitStatus(), 0);
}

TEST_F(ProgramTest, EndsWithItsParentWhenAskedTo) {
  Program program({"--until-eof"});
  ASSERT_TRUE(program.ready().is_object());
  program.closeInput();
  EXPECT_EQ(program.exitStatus(), 0);
}

TEST_F(ProgramTest, TakesItsFormerPortsUnlessTheyAreInUse) {
  const auto portsFile = (folder_ / "ports.json").string();
  boost::json::value first;
  {
    Program program({"--ports-file", portsFile});
    first = program.ready();
  }
  Program again({"--ports-file", portsFile});
  EXPECT_EQ(again.ready(), first);
  Program beside({"--ports-file", portsFile});
  const auto other = beside.ready();
  EXPECT_NE(other.at("web"), first.at("web"));
  EXPECT_EQ(fetch({std::string(other.at("web").as_string())}).status, 200u);
  EXPECT_THAT(std::string(other.at("web").as_string()),
              HasSubstr(":" + std::to_string(readJson("ports.json").at("web").as_int64()) + "/"));
}

TEST_F(ProgramTest, SaysInOneLineWhyItCannotStart) {
  Program taken({});
  const auto url = std::string(taken.ready().at("web").as_string());
  const auto port = url.substr(url.rfind(':') + 1, url.size() - url.rfind(':') - 2);
  const struct {
    std::vector<std::string> arguments;
    const char* reason;
  } cases[] = {
      {{"--port", port}, "cannot listen"},
      {{"--port", "70000"}, "no port number"},
      {{"--port"}, "needs a value"},
      {{"--serve"}, "unknown option --serve"},
      {{"--site-file", (folder_ / "none/site.json").string()}, "No such file"},
  };
  for (const auto& [arguments, reason] : cases) {
    Program program(arguments);
    EXPECT_EQ(program.exitStatus(), 2) << reason;
    EXPECT_THAT(program.errorLine(), HasSubstr(reason));
  }
}

TEST(PortsFileTest, TakesOnlyWholeAndSensibleFiles) {
  EXPECT_EQ(parsePorts(portsFileFor({8001, 8002})), (Ports{8001, 8002}));
  for (const char* text : {"", "{", "[1, 2]", R"({"web": 1})", R"({"web": 0, "control": 2})",
                           R"({"web": 70000, "control": 2})", R"({"web": "1", "control": 2})"}) {
    EXPECT_FALSE(parsePorts(text)) << text;
  }
}

} // namespace ondrel::demo
