#include "ScriptTest.h"

#include "platform/linux/text/ResourceText.h"
#include "scripts/PageScriptSource.h"
#include "web/WebViewConfiguration.h"

#include <fstream>
#include <sstream>

namespace ondrel::tests {

namespace {
const web::PageScripts& allScripts() {
  static const web::PageScripts all(
      scripts::pageScriptSource(platform::text::resourceText, scripts::ConsoleRelay::wanted));
  return all;
}
} // namespace

std::shared_ptr<const UserScript> ScriptTest::injected(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(ONDREL_TEST_PAGES "/" + file).rdbuf();
  return std::make_shared<const UserScript>(
      UserScript{file, text.str(), InjectionTime::documentStart, file != "prelude.js"});
}

std::shared_ptr<const UserScript> ScriptTest::pageScript(std::string_view name) {
  for (const auto& list : {allScripts().mainConfiguration(), allScripts().composeConfiguration()})
    for (const auto& script : list->userScripts)
      if (script->name == name)
        return script;
  throw std::runtime_error("no page script " + std::string(name));
}

std::string ScriptTest::asked(std::string_view name) {
  return scripts::pageScriptSource(platform::text::resourceText, scripts::ConsoleRelay::unwanted)(name)
      .value();
}

void ScriptTest::runInPage(const std::string& call, const std::string& what) {
  delegate_.messages.clear();
  const auto started = evaluate(call + "; 0");
  ASSERT_TRUE(started) << started.error().message << "\n" << call;
  const auto outcome = [this]() -> const boost::json::value* {
    const auto* body = delegate_.messages.empty() ? nullptr : delegate_.messages.back().body.if_object();
    return body ? body->if_contains("failures") : nullptr;
  };
  ASSERT_TRUE(waitFor(outcome)) << "never finished: " << what;
  EXPECT_EQ(std::string(outcome()->as_string()), "") << what;
}

} // namespace ondrel::tests
