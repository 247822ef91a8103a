// Files and pictures of other programs, dropped on a letter and pasted into it.
#include "UserHandsTest.h"

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class FilesTest : public UserHandsTest {
 protected:
  std::unique_ptr<Process> source(std::vector<std::string> arguments) {
    const auto log = profile / ("source-" + std::to_string(++sources_));
    auto process = std::make_unique<Process>(FILE_SOURCE_PROBE, std::move(arguments), Environment(), log);
    EXPECT_TRUE(eventually([&] { return process->output().contains("ready"); })) << process->output();
    return process;
  }
  int sources_ = 0;
  bool uploadsBecome(int number) const {
    return eventually([&] { return requests("/data/upload") == number; });
  }
};

TEST_F(FilesTest, AreAttachedToTheLetterThatIsBeingWritten) {
  const auto program = start();
  const auto main = signIn(*program);
  press("c");
  ASSERT_TRUE(eventually([&] { return title(main) == "New message"; })) << title(main);
  write(profile / "100% \u00FCber.txt", "one");
  write(profile / "two.html", "<title>Replaced</title>");
  fs::create_directory(profile / "folder");
  {
    const auto other = source({profile / "100% \u00FCber.txt", profile / "two.html", profile / "folder"});
    const auto found = xdotool("search --sync --onlyvisible --name 'File Source'");
    ASSERT_FALSE(found.empty());
    const auto window = std::stoul(found.front());
    moveTo(window, 50, 50);
    // As a hand does it, which goes on when it sees what has come of its last step.
    const auto onto = "mousemove --window " + std::to_string(main);
    xdotool("mousedown 1");
    EXPECT_TRUE(eventually([&] {
      xdotool("mousemove_relative 10 10 sleep 0.2");
      return other->output().contains("dragging");
    }));
    EXPECT_TRUE(eventually([&] {
      xdotool(onto + " 400 400 sleep 0.2 " + onto + " 420 410 sleep 0.2");
      return other->output().ends_with("\nwanted\n");
    })) << other->output();
    xdotool("mouseup 1");
    EXPECT_TRUE(uploadsBecome(2)) << program->output();
    EXPECT_EQ(title(main), "New message") << "no file takes the place of the page";

    // The same files are on its clipboard.
    focus(main);
    press("ctrl+v");
    EXPECT_TRUE(uploadsBecome(4)) << program->output();
  }
  const auto other = source({"--picture", PICTURE});
  focus(main);
  // On a busy machine the program hears late of the clipboard's new owner.
  EXPECT_TRUE(eventually([&] {
    press("ctrl+v");
    return eventually([&] { return requests("/data/upload") > 4; }, 3s);
  })) << program->output();
  EXPECT_EQ(title(main), "New message");
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
