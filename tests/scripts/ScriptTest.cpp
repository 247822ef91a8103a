#include "ScriptTest.h"

#include "scripts/PageScriptSource.h"
#include "web/WebViewConfiguration.h"

#include <boost/json/serialize.hpp>
#include <fmt/format.h>

#include <fstream>
#include <sstream>

namespace ondrel::tests {

namespace {

const web::PageScripts& pageScripts() {
  static const web::PageScripts scripts(scripts::pageScriptSource);
  return scripts;
}

std::string textOf(const boost::json::value& body) {
  std::string text;
  for (const auto& [name, value] : body.as_object()) {
    if (name != "type")
      text += (text.empty() ? ": " : ", ") + std::string(value.as_string());
  }
  return std::string(body.at("type").as_string()) + text;
}

} // namespace

std::shared_ptr<const UserScript> ScriptTest::pageScript(const std::string& name) {
  for (const auto& configuration : {pageScripts().mainConfiguration(), pageScripts().composeConfiguration()})
    for (const auto& script : configuration->userScripts)
      if (script->name == name)
        return script;
  throw std::runtime_error("no page script " + name);
}

std::shared_ptr<const UserScript> ScriptTest::prelude() {
  std::ostringstream source;
  source << std::ifstream(ONDREL_TEST_PRELUDE).rdbuf();
  return std::make_shared<const UserScript>(
      UserScript{"prelude", source.str(), InjectionTime::documentStart, false});
}

WebKitTest::Scripts ScriptTest::withPrelude(bool isCompose) {
  Scripts scripts{prelude()};
  const auto& all =
      (isCompose ? pageScripts().composeConfiguration() : pageScripts().mainConfiguration())->userScripts;
  scripts.insert(scripts.end(), all.begin(), all.end());
  return scripts;
}

void ScriptTest::open(const std::vector<std::string>& scripts, const std::string& html) {
  Scripts injected{prelude()};
  for (const auto& name : scripts)
    injected.push_back(pageScript(name));
  useScripts(std::move(injected));
  loadHtml(html);
}

void ScriptTest::run(const std::string& body) {
  const auto token = fmt::format("run {}", ++runs_);
  const auto result = evaluate(fmt::format(
      "(async () => {{ {} }})().then(() => 'done', (error) => `threw ${{error}}`).then((outcome) => "
      "window.webkit.messageHandlers.ondrel.postMessage({{type: '{}', outcome}})); 0",
      body, token));
  ASSERT_TRUE(result) << result.error().message << "\n" << body;
  const auto finished = [&] {
    return !delegate_.messages.empty() && textOf(delegate_.messages.back().body).starts_with(token + ":");
  };
  ASSERT_TRUE(waitFor(finished)) << "never finished: " << body;
  EXPECT_EQ(textOf(delegate_.messages.back().body), token + ": done") << body;
  delegate_.messages.pop_back();
}

std::string ScriptTest::value(const std::string& expression) {
  return evaluateToText(expression);
}

std::vector<std::string> ScriptTest::posts() {
  std::vector<std::string> result;
  for (; seen_ < delegate_.messages.size(); ++seen_)
    result.push_back(textOf(delegate_.messages[seen_].body));
  return result;
}

std::vector<std::string> ScriptTest::logs() {
  std::vector<std::string> result;
  const auto lines = evaluate("logged.splice(0)");
  if (!lines)
    throw std::runtime_error("the page has no log");
  for (const auto& line : lines->as_array())
    result.emplace_back(line.as_string());
  return result;
}

} // namespace ondrel::tests
