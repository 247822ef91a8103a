#include "platform/linux/desktop/AutostartEntry.h"

#include "async/VirtualEventLoop.h"
#include "platform/linux/files/PosixFileStore.h"
#include "support/RunToEnd.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace ondrel::platform::desktop {
namespace {

TEST(AutostartEntryTest, CountsWhileTheDesktopStartsThisProgramByIt) {
  async::VirtualEventLoop loop;
  async::Scope scope;
  const support::TemporaryFolder folder;
  files::PosixFileStore files;
  // A name that Exec has to quote.
  const auto program = folder.file("a $HOME \"q\" \\");
  std::filesystem::copy_file("/bin/true", program);
  const auto file = "autostart/org.example.Mail.desktop";
  AutostartEntry entry(files,
                       {folder.file("autostart"), "org.example.Mail", "Mail", {program, "--background"}});
  EXPECT_FALSE(entry.isEnabled());
  ASSERT_TRUE(support::runToEnd(loop, scope, entry.setEnabled(true)));
  EXPECT_TRUE(entry.isEnabled());
  const auto written = folder.content(file);

  struct Case {
    const char* what;
    std::string from;
    std::string to;
  };
  const Case cases[] = {{"switched off", "Terminal=false", "Hidden=true"},
                        {"switched off by GNOME", "Terminal=false", "X-GNOME-Autostart-enabled=false"},
                        {"for another desktop", "Terminal=false", "OnlyShowIn=Elsewhere;"},
                        {"with a window", "\"--background\"", ""},
                        {"another program", written.substr(written.find("Exec="), 8), "Exec=/bin/sh \""},
                        {"no entry at all", written, "..."}};
  for (const auto& each : cases) {
    auto text = written;
    const auto at = text.find(each.from);
    if (at == std::string::npos)
      text += each.to + "\n";
    else
      text.replace(at, each.from.size(), each.to);
    folder.write(file, text);
    EXPECT_FALSE(entry.isEnabled()) << each.what;
  }
  folder.write(file, written);
  EXPECT_TRUE(entry.isEnabled());
  std::filesystem::remove(program);
  EXPECT_FALSE(entry.isEnabled()) << "the program has moved";
  ASSERT_TRUE(support::runToEnd(loop, scope, entry.setEnabled(false)));
  EXPECT_TRUE(std::filesystem::is_empty(folder.file("autostart")));
}

} // namespace
} // namespace ondrel::platform::desktop
