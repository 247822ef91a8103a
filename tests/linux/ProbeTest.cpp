#include "platform/linux/desktop/RunningInstance.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace ondrel::platform {

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

// A running application_probe, with what it prints.
class Probe {
 public:
  explicit Probe(std::vector<std::string> arguments) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    output_ = ends[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
    std::vector<char*> argv{const_cast<char*>(APPLICATION_PROBE)};
    for (auto& argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      execv(APPLICATION_PROBE, argv.data());
      _exit(127);
    }
    close(ends[1]);
  }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  ~Probe() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    close(output_);
  }

  bool says(const std::string& text) {
    for (int i = 0; i < 2000; ++i) {
      readMore();
      if (said.find(text) != std::string::npos)
        return true;
      std::this_thread::sleep_for(5ms);
    }
    return false;
  }
  int exitStatus() {
    int status = 0;
    waitpid(std::exchange(pid_, 0), &status, 0);
    readMore();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void signal(int number) const { kill(pid_, number); }

  std::string said;

 private:
  void readMore() {
    char bytes[4096];
    for (ssize_t got = 0; (got = read(output_, bytes, sizeof bytes)) > 0;)
      said.append(bytes, static_cast<std::size_t>(got));
  }
  pid_t pid_ = 0;
  int output_ = -1;
};

class ProbeTest : public testing::Test {
 protected:
  const std::string id = fmt::format("org.velmora.Ondrel.Probe{}", getpid());
};

TEST_F(ProbeTest, HandsUrlsToTheFirstInstanceToTheLetter) {
  Probe first({id, "mailto:a@b?subject=x%20y", "bad \xff\n\x1b[31m", ""});
  ASSERT_TRUE(first.says("url mailto:a@b?subject=x%20y\n"));
  EXPECT_THAT(first.said, HasSubstr("startup\ndidFinishLaunching\nurl mailto"));
  EXPECT_THAT(first.said, HasSubstr("ondrel[network] error: Unexpected URL: bad \uFFFD"));
  EXPECT_EQ(first.said.find('\x1b'), std::string::npos);

  Probe second({id, "email://abc", "MAILTO:ä?%zz", "no url"});
  EXPECT_EQ(second.exitStatus(), 0);
  EXPECT_EQ(second.said, "exit 0\n");
  EXPECT_TRUE(first.says("url email://abc\nurl MAILTO:ä?%zz\nurl no url\n"));

  Probe third({id});
  EXPECT_EQ(third.exitStatus(), 0);
  EXPECT_TRUE(first.says("reopen true\n"));

  EXPECT_EQ(desktop::RunningInstance(id).open({"mailto:" + std::string(1 << 20, 'x') + "y"}), 0);
  EXPECT_TRUE(first.says(fmt::format("url of {} bytes ending in y\n", 8 + (1 << 20))));

  first.signal(SIGTERM);
  EXPECT_EQ(first.exitStatus(), 0);
  EXPECT_THAT(first.said, testing::EndsWith("aboutToQuit with 1 windows\nexit 0\n"));
  EXPECT_EQ(desktop::RunningInstance(id).open({}), std::nullopt);
}

// It used to be given up as delivered once it was sent.
TEST_F(ProbeTest, TakesBackWhatTheFirstInstanceDidNotLiveToGet) {
  Probe first({id});
  ASSERT_TRUE(first.says("didFinishLaunching"));
  first.signal(SIGSTOP);
  Probe second({id, "mailto:a@b"});
  std::this_thread::sleep_for(500ms); // it has asked by now, or will find nobody to ask
  first.signal(SIGKILL);
  EXPECT_TRUE(second.says("url mailto:a@b\n"));
}

} // namespace

} // namespace ondrel::platform
