// An application that prints what happens to it, one line each: application_probe ID [URL...].

#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/text/GlibLogSink.h"
#include "platform/linux/windows/LinuxApplication.h"

#include <fmt/format.h>

#include <cstdio>

using namespace ondrel;

namespace {

void say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
  platform::text::GlibLogSink::install(argv[1]);
  platform::desktop::chooseRendering();
  glib::GlibEventLoop loop;
  platform::windows::LinuxApplication application({.applicationId = argv[1], .displayName = "Probe"});

  const auto terminating = application.aboutToQuit.subscribe(
      [&] { say(fmt::format("aboutToQuit with {} windows", application.windows().size())); });
  const auto launched = application.didFinishLaunching.subscribe([] { say("didFinishLaunching"); });
  const auto url = application.urlReceived.subscribe([](const std::string& text) {
    say(text.size() < 200 ? "url " + text
                          : fmt::format("url of {} bytes ending in {}", text.size(), text.back()));
  });
  const auto reopened =
      application.reopenRequested.subscribe([](bool visible) { say(fmt::format("reopen {}", visible)); });

  const int status = application.run({argv + 2, argv + argc}, [&application] {
    say("startup");
    application
        .makeWindow(
            {.contentWidth = 870, .contentHeight = 768, .tabbingIdentifier = "", .identifier = "probe"})
        ->present();
  });
  say(fmt::format("exit {}", status));
  return status;
}
