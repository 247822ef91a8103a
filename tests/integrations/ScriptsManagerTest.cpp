#include "integrations/ScriptsManager.h"

#include "support/FakeFileReader.h"
#include "support/FakeUserFolders.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {

using namespace std::chrono_literals;
namespace keys = settings::keys;

TEST(ScriptsManagerTest, AddsOnceToThePageInFrontHoweverLateTheFilesCome) {
  support::TestShell shell;
  shell.start();
  support::FakeUserFolders folders{shell.files};
  support::FakeFileReader reader{shell.files};
  ScriptsManager scripts{
      {shell.files, folders, shell.files, reader, shell.uriLauncher, shell.settings, "Ondrel"}};
  scripts.resolveActiveWebView = [&] { return shell.manager->windows().frontViewModel(); };
  shell.services.addToPage = [&](const auto& tab) { return scripts.pageDidFinish(tab); };
  const std::string big(ScriptsManager::largestFile + 1, ' ');
  for (const auto& [name, text] : {std::pair<const char*, std::string>("b.js", "b"),
                                   {"C.js", "C"},
                                   {"c.JS", "no"},
                                   {"bad.js", "\xFF"},
                                   {"big.js", big},
                                   {"style.css", "x"}})
    shell.files.files["/documents/Scripts/" + std::string(name)] = text;
  const auto view = shell.webView(shell.focusedModel());
  // What runs within that time.
  const auto wait = [&](async::Duration time) {
    shell.loop.advance(time);
    std::string all;
    for (const auto& source : std::exchange(view->evaluations, {}))
      if (source == "C\nb" || source.contains("ondrel-css"))
        all += source.contains("createElement") ? "style" : source;
    return all;
  };
  const auto load = [&](async::Duration time, const char* url = "https://app.example.com/mail/") {
    view->goTo(url);
    view->commit();
    view->finish();
    return wait(time);
  };
  EXPECT_EQ(load(0s), "");
  shell.settings.set(keys::runJS, true);
  EXPECT_EQ(wait(3s), "") << "it was off when the page had loaded";
  EXPECT_EQ(load(499ms), "");
  folders.delay = 2s;
  EXPECT_EQ(load(3s), "C\nb") << "the page before has gone with what was to be done in it";
  EXPECT_EQ(load(1s), "");
  view->commit(); // while the files are read
  EXPECT_EQ(wait(3s), "");
  EXPECT_EQ(load(3s, "https://elsewhere.example.net/"), "");

  shell.settings.set(keys::runJS, false);
  EXPECT_EQ(load(0s), "");
  shell.settings.set(keys::injectCSS, true);
  EXPECT_EQ(wait(3s), "style");
  EXPECT_EQ(load(1s), "");
  shell.settings.set(keys::injectCSS, false);
  EXPECT_EQ(wait(3s), "document.getElementById('ondrel-css')?.remove();");

  shell.settings.set(keys::runJS, true);
  shell.manager->openMainWindow();
  shell.application.all.front()->withdraw(); // another one is in front
  EXPECT_EQ(load(3s), "");
  EXPECT_FALSE(shell.log.anyStartsWith("error"));
}

} // namespace ondrel::integrations
