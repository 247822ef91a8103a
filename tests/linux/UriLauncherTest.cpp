#include "async/Scope.h"
#include "base/Log.h"
#include "platform/linux/desktop/LinuxUriLauncher.h"
#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/TemporaryFolder.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace ondrel::platform {

namespace {

// Each runs in a process of its own: GIO reads the folders' variables once, and rendering is chosen once.
class WorkspaceDeathTest : public testing::Test {
 protected:
  WorkspaceDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  // A desktop whose handler of web links and text files writes down what it was given.
  void makeDesktop() {
    setenv("XDG_DATA_HOME", folder.path().c_str(), 1);
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    unsetenv("GSK_RENDERER");
    setenv("ONDREL_RENDERING", "software", 1);
    folder.write("handler", "#!/bin/sh\nprintf '%s|%s' \"$1\" \"${GSK_RENDERER-unset}\" >\"" +
                                folder.file("made") + "\"\nmv \"" + folder.file("made") + "\" \"" +
                                folder.file("opened") + "\"\n");
    std::filesystem::permissions(folder.file("handler"), std::filesystem::perms(0700));
    std::filesystem::create_directories(folder.file("applications"));
    folder.write("applications/test.Handler.desktop",
                 "[Desktop Entry]\nType=Application\nName=Test\nExec=" + folder.file("handler") +
                     " %u\nMimeType=x-scheme-handler/https;text/plain;inode/directory;\n");
    folder.write("mimeapps.list", "[Default Applications]\nx-scheme-handler/https=test.Handler.desktop\n"
                                  "text/plain=test.Handler.desktop\ninode/directory=test.Handler.desktop\n");
    base::setLogSink([](base::LogLevel, std::string_view, std::string_view message) {
      std::fprintf(stderr, "%s\n", std::string(message).c_str());
    });
    desktop::chooseRendering();
  }

  // What the handler got when that URL was opened, or "nothing".
  std::string opened(const std::string& url) {
    return openedBy([&] { uriLauncher.open(url); });
  }
  std::string openedBy(const std::function<void()>& act) {
    std::filesystem::remove(folder.file("opened"));
    act();
    for (int i = 0; i < 1000 && !std::filesystem::exists(folder.file("opened")); ++i) {
      while (g_main_context_iteration(nullptr, FALSE)) {
      }
      g_usleep(5000);
    }
    return std::filesystem::exists(folder.file("opened")) ? folder.content("opened") : "nothing";
  }

  static async::Task<void> printError(async::Task<std::expected<void, std::string>> task) {
    const auto done = co_await std::move(task);
    if (!done)
      std::fprintf(stderr, "error: %s\n", done.error().c_str());
  }
  void openFiles() {
    const glib::GlibEventLoop loop;
    async::Scope scope;
    for (const auto* name : {"note.txt", "a.exe"})
      std::fprintf(stderr, "file: %s\n", openedBy([&] {
                                           scope.spawn(printError(uriLauncher.openFile(folder.file(name))));
                                         }).c_str());
    std::fprintf(
        stderr, "shown: %s\n",
        openedBy([&] { scope.spawn(printError(uriLauncher.showFile(folder.file("note.txt")))); }).c_str());
    scope.spawn(printError(uriLauncher.openFile(folder.file("gone"))));
    while (scope.active() > 0)
      g_main_context_iteration(nullptr, TRUE);
  }

  void openAll() {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/gone",
           1); // the machine may have a file manager that the bus starts
    makeDesktop();
    std::fprintf(stderr, "link: %s\n", opened("https://example.org/a?b=%20c&d").c_str());
    folder.write("note.txt", "plain");
    std::fprintf(stderr, "text: %s\n", opened("file://" + folder.file("note.txt")).c_str());
    folder.write("program.txt", "plain");
    std::filesystem::permissions(folder.file("program.txt"), std::filesystem::perms(0700));
    std::fprintf(stderr, "program: %s\n", opened("file://" + folder.file("program.txt")).c_str());
    for (const auto* name : {"a.exe", "a.msi", "a.jnlp", "a.url"}) {
      folder.write(name, "x");
      std::fprintf(stderr, "program: %s\n", opened("file://" + folder.file(name)).c_str());
    }
    openFiles();
    std::fprintf(stderr, "handler: %s\n",
                 uriLauncher.defaultApplicationForScheme("https").value_or("none").c_str());
    std::fprintf(stderr, "nobody: %s\n",
                 uriLauncher.defaultApplicationForScheme("no such").value_or("none").c_str());
    for (const auto* url :
         {"-x", "--help", "relative/path", "https://a b", "https://a\nb", "https://a\x01", "", "%zz:"})
      uriLauncher.open(url);
    std::filesystem::remove_all(folder.path());
    std::exit(0);
  }

  static void choose() {
    setenv("ONDREL_RENDERING", "software", 1);
    setenv("GSK_RENDERER", "ngl", 1);
    unsetenv("WEBKIT_DISABLE_DMABUF_RENDERER");
    const bool software = desktop::chooseRendering() == desktop::Rendering::software;
    const bool kept =
        std::string(getenv("GSK_RENDERER")) == "ngl" && getenv("WEBKIT_DISABLE_DMABUF_RENDERER");
    setenv("ONDREL_RENDERING", "hardware", 1);
    const bool hardware = desktop::chooseRendering() == desktop::Rendering::hardware;
    unsetenv("ONDREL_RENDERING");
    const bool found =
        (desktop::chooseRendering() == desktop::Rendering::hardware) == desktop::hasRenderDevice();
    std::exit(software && kept && hardware && found ? 0 : 1);
  }

  support::TemporaryFolder folder;
  desktop::LinuxUriLauncher uriLauncher;
};

TEST_F(WorkspaceDeathTest, OpensLinksAndRefusesWhatIsNone) {
  const std::string refused = "Refused to open what is no absolute URL";
  EXPECT_EXIT(
      openAll(), testing::ExitedWithCode(0),
      testing::AllOf(testing::HasSubstr("link: https://example.org/a?b=%20c&d|unset\n"),
                     testing::ContainsRegex("text: /tmp/[^/]*/note.txt.unset\n"),
                     testing::ContainsRegex("(program: /tmp/[^/]*.unset\n){5}"),
                     testing::ContainsRegex("file: /tmp/[^/]*/note.txt.unset\nfile: /tmp/[^/]*.unset\n"),
                     testing::ContainsRegex("shown: /tmp/[^/]*.unset\nerror: The file is not there any more"),
                     testing::HasSubstr("handler: test.Handler\nnobody: none\n"),
                     testing::ContainsRegex("(" + refused + ".*\n){8}")));
}

TEST_F(WorkspaceDeathTest, RenderingLeavesWhatTheUserHasSet) {
  EXPECT_EXIT(choose(), testing::ExitedWithCode(0), "");
}

} // namespace

} // namespace ondrel::platform
