// What keeps a page that has taken over its process from the user's machine.
#include "platform/linux/webkit/WebKitSandbox.h"
#include "support/TemporaryFolder.h"
#include "support/WebKitTest.h"

#include <csignal>
#include <fstream>
#include <unistd.h>

namespace ondrel::tests {

using support::TemporaryFolder;

namespace {

constexpr const char* disablingVariable = "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS";

// The field of /proc/PID/status; empty when there is none.
std::string status(const std::string& pid, const std::string& field) {
  std::ifstream file("/proc/" + pid + "/status");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with(field + ":\t"))
      return line.substr(field.size() + 2);
  return {};
}

bool isOurs(std::string pid) {
  for (; pid != "0" && !pid.empty(); pid = status(pid, "PPid"))
    if (pid == std::to_string(getpid()))
      return true;
  return false;
}

std::vector<std::string> webProcesses() {
  std::vector<std::string> result;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const auto pid = entry.path().filename().string();
    if (status(pid, "Name").starts_with("WebKitWebProc") && isOurs(pid))
      result.push_back(pid);
  }
  return result;
}

} // namespace

using SandboxTest = WebKitTest;

TEST_F(SandboxTest, WebProcessIsShutIn) {
  if (g_getenv(disablingVariable))
    GTEST_SKIP() << "no sandbox can be made on this machine";
  loadHtml("<p>page</p>");
  const auto processes = webProcesses();
  ASSERT_FALSE(processes.empty());
  for (const auto& pid : processes) {
    EXPECT_EQ(status(pid, "NoNewPrivs"), "1");
    EXPECT_EQ(status(pid, "Seccomp"), "2") << "a filter of system calls";
    for (const std::string space : {"mnt", "pid"})
      EXPECT_NE(std::filesystem::read_symlink("/proc/" + pid + "/ns/" + space),
                std::filesystem::read_symlink("/proc/self/ns/" + space));
  }
}

TEST_F(SandboxTest, DeadWebProcessIsToldAndReplaced) {
  loadHtml("<p>page</p>");
  for (const auto& pid : webProcesses())
    kill(std::stoi(pid), SIGKILL);
  ASSERT_TRUE(waitForEvent("crashed"));
  delegate_.events.clear();
  view().reload();
  ASSERT_TRUE(waitForEvent("finish"));
  EXPECT_EQ(evaluateToText("document.body.innerText"), "\"page\"");
}

TEST_F(SandboxTest, OnlyARefusalSwitchesItOff) {
  const struct {
    const char* bubblewrap; // a script in its place; null for none
    bool isOn;
  } table[] = {
      {"exit 0", true},
      {"[ -e tried ] && exit 0; touch tried; echo \"bwrap: Can't fork for pid 1: Resource temporarily "
       "unavailable\" >&2; exit 1",
       true},
      {"echo 'bwrap: Creating new namespace failed: Cannot allocate memory' >&2; exit 1", true},
      {"kill -9 $$", true},
      {"[ -e tried ] && exit 0; touch tried; echo 'bwrap: setting up uid map: Permission denied' >&2; exit 1",
       true},
      {"echo 'bwrap: No permissions to create new namespace, likely because' >&2; exit 1", false},
      {nullptr, false},
  };
  const std::string path = g_getenv("PATH");
  const auto old = std::filesystem::current_path();
  const bool wasOff = g_getenv(disablingVariable);
  for (const auto& row : table) {
    const TemporaryFolder folder;
    std::filesystem::current_path(folder.path());
    if (row.bubblewrap) {
      folder.write("bwrap", std::string("#!/bin/sh\nPATH=/usr/bin:/bin\n") + row.bubblewrap + "\n");
      std::filesystem::permissions(folder.file("bwrap"), std::filesystem::perms::owner_all);
    }
    g_setenv("PATH", folder.path().c_str(), TRUE);
    g_unsetenv(disablingVariable);
    EXPECT_EQ(platform::webkit::ensureSandboxOrFallBack(), row.isOn)
        << (row.bubblewrap ? row.bubblewrap : "none");
    EXPECT_EQ(g_getenv(disablingVariable) == nullptr, row.isOn);
  }
  g_setenv("PATH", path.c_str(), TRUE);
  std::filesystem::current_path(old);
  if (wasOff)
    g_setenv(disablingVariable, "1", TRUE);
  else
    g_unsetenv(disablingVariable);
}

TEST_F(SandboxTest, SettingsThatSecurityDependsOn) {
  auto* widget = gtk_widget_get_first_child(static_cast<GtkWidget*>(view().nativeView().handle));
  auto* settings = webkit_web_view_get_settings(WEBKIT_WEB_VIEW(widget));
  for (const char* off : {"allow-file-access-from-file-urls", "allow-top-navigation-to-data-urls",
                          "allow-universal-access-from-file-urls", "disable-web-security",
                          "enable-developer-extras", "enable-media-stream", "enable-webrtc",
                          "enable-write-console-messages-to-stdout", "javascript-can-access-clipboard"}) {
    gboolean value = TRUE;
    g_object_get(settings, off, &value, nullptr);
    EXPECT_FALSE(value) << off;
  }
}

TEST_F(SandboxTest, PageThatEatsMemoryIsEnded) {
  auto small = options();
  small.pageMemoryLimit = 300;
  factory_ = std::make_unique<platform::webkit::WebKitViewFactory>(small);
  loadHtml("<p>page</p>");
  evaluate("var eaten = []; setInterval(() => {"
           "if (eaten.length < 40) eaten.push(new Uint8Array(20 << 20).fill(1)) }, 20); 0");
  EXPECT_TRUE(waitFor([&] { return delegate_.count("crashed") == 1; }, 30s));
}

} // namespace ondrel::tests
