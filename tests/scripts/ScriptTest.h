#pragma once

#include "WebKitTest.h"

#include <gmock/gmock.h>

namespace ondrel::tests {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Page scripts in the real engine, with the page's clock in the test's hand (see prelude.js for what the page
// has).
class ScriptTest : public WebKitTest {
 protected:
  // Shows a page with these scripts, each at its own time and in its own frames, in the order given.
  void open(const std::vector<std::string>& scripts, const std::string& html);
  // As the page above, but with scripts of the test among them.
  static std::shared_ptr<const UserScript> pageScript(const std::string& name);
  static std::shared_ptr<const UserScript> prelude();
  // All scripts that the program injects into an ordinary tab or a compose window.
  static Scripts withPrelude(bool isCompose);

  // Runs the body of an async function in the page to its end. An exception fails the test.
  void run(const std::string& body);
  // The value of an expression as JSON.
  std::string value(const std::string& expression);

  // What the page has posted since the last call: "type" or "type: a, b" with the other fields' values.
  std::vector<std::string> posts();
  // What the page has logged since the last call.
  std::vector<std::string> logs();

 private:
  std::size_t seen_ = 0;
  int runs_ = 0;
};

} // namespace ondrel::tests
