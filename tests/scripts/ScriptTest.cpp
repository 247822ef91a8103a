#include "ScriptTest.h"

#include "platform/linux/ResourceText.h"
#include "scripts/PageScriptSource.h"
#include "web/WebViewConfiguration.h"

#include <fstream>
#include <sstream>

namespace ondrel::tests {

std::string ScriptTest::read(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(ONDREL_TEST_PAGES "/" + file).rdbuf();
  return text.str();
}

std::shared_ptr<const UserScript> ScriptTest::injected(const std::string& file) {
  return std::make_shared<const UserScript>(
      UserScript{file, read(file), InjectionTime::documentStart, file != "prelude.js"});
}

std::shared_ptr<const UserScript> ScriptTest::pageScript(std::string_view name) {
  static const web::PageScripts all(scripts::pageScriptSource(resourceText));
  for (const auto& configuration : {all.mainConfiguration(), all.composeConfiguration()})
    for (const auto& script : configuration->userScripts)
      if (script->name == name)
        return script;
  throw std::runtime_error("no page script " + std::string(name));
}

void ScriptTest::runInPage(const std::string& call, const std::string& what) {
  delegate_.messages.clear();
  const auto started = evaluate(call + "; 0");
  ASSERT_TRUE(started) << started.error().message << "\n" << call;
  ASSERT_TRUE(waitForMessages(1)) << "never finished: " << what;
  EXPECT_EQ(std::string(delegate_.messages[0].body.at("failures").as_string()), "") << what;
}

} // namespace ondrel::tests
