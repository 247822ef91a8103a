#include "Client.h"
#include "support/TemporaryFolder.h"

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

namespace ondrel::demo {
namespace {

using testing::HasSubstr;

// The program itself, with its standard streams held by pipes.
class Program {
 public:
  explicit Program(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), ONDREL_DEMO_SERVICE);
    arguments.push_back(nullptr);
    process_ = glib::adopt(
        g_subprocess_newv(arguments.data(),
                          GSubprocessFlags(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                           G_SUBPROCESS_FLAGS_STDERR_PIPE),
                          nullptr));
  }
  ~Program() {
    g_subprocess_send_signal(process_.get(), SIGTERM);
    exitStatus();
  }

  // What it says when it is ready.
  boost::json::value ready() {
    return boost::json::parse(line(g_subprocess_get_stdout_pipe(process_.get())));
  }
  std::string errorLine() { return line(g_subprocess_get_stderr_pipe(process_.get())); }
  void closeInput() { g_output_stream_close(g_subprocess_get_stdin_pipe(process_.get()), nullptr, nullptr); }
  // Waits for the end. -1 when a signal killed it.
  int exitStatus() {
    g_subprocess_wait(process_.get(), nullptr, nullptr);
    return g_subprocess_get_if_exited(process_.get()) ? g_subprocess_get_exit_status(process_.get()) : -1;
  }

 private:
  static std::string line(GInputStream* stream) {
    std::string text;
    for (char next = 0; g_input_stream_read(stream, &next, 1, nullptr, nullptr) == 1 && next != '\n';)
      text += next;
    return text;
  }

  glib::Ref<GSubprocess> process_;
};

TEST(ProgramTest, WritesTheAddressesThatItServesAndEndsWithItsParent) {
  const support::TemporaryFolder folder;
  const auto file = folder.file("site.json");
  Program program({"--site-file", file.c_str(), "--until-eof"});
  const auto ready = program.ready();
  EXPECT_EQ(ready.at("siteFile"), boost::json::value(file));
  const auto site = boost::json::parse(folder.content("site.json"));
  EXPECT_EQ(site.at("WebAppBaseURL").at("production"), ready.at("web"));
  const std::string address(ready.at("web").as_string());
  const auto port = static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
  EXPECT_EQ(Client(port, "GET / HTTP/1.0\r\nHost: beta.localhost\r\n\r\n").answer().status, 200U);
  program.closeInput();
  EXPECT_EQ(program.exitStatus(), 0);
}

TEST(ProgramTest, TakesItsFormerPortsUnlessTheyAreInUse) {
  const support::TemporaryFolder folder;
  const auto file = folder.file("ports.json");
  for (const char* damaged : {"{", "[1, 2]", R"({"web": 70000, "control": "2"})"}) {
    folder.write("ports.json", damaged);
    EXPECT_TRUE(Program({"--ports-file", file.c_str()}).ready().is_object()) << damaged;
  }
  const auto first = Program({"--ports-file", file.c_str()}).ready();
  Program again({"--ports-file", file.c_str()});
  EXPECT_EQ(again.ready(), first);
  Program beside({"--ports-file", file.c_str()});
  EXPECT_NE(beside.ready().at("web"), first.at("web"));
}

TEST(ProgramTest, SaysInOneLineWhyItCannotStart) {
  Program taken({});
  const std::string url(taken.ready().at("web").as_string());
  const auto port = url.substr(url.rfind(':') + 1, url.size() - url.rfind(':') - 2);
  const std::pair<std::vector<const char*>, const char*> cases[] = {
      {{"--port", port.c_str()}, "cannot listen"},
      {{"--port", "70000"}, "no port number"},
      {{"--port"}, "--port"},
      {{"--serve"}, "--serve"},
      {{"serve"}, "serve"},
      {{"--site-file", "/none/site.json"}, "No such file"},
  };
  for (const auto& [arguments, reason] : cases) {
    Program program(arguments);
    EXPECT_EQ(program.exitStatus(), 2) << reason;
    EXPECT_THAT(program.errorLine(), HasSubstr(reason));
  }
}

} // namespace
} // namespace ondrel::demo
