#pragma once

#include "support/WebKitTest.h"

namespace ondrel::tests {

// Page scripts in the real engine, on pages that have the words of prelude.js.
class ScriptTest : public WebKitTest {
 protected:
  static std::shared_ptr<const UserScript>
  injected(const std::string& file); // of this folder, before all else
  static std::shared_ptr<const UserScript> pageScript(std::string_view name);
  static std::string asked(std::string_view name); // the text of a script that is evaluated for its value

  // Runs a JavaScript call that ends with run() of the prelude; what the page found wrong fails the test.
  void runInPage(const std::string& call, const std::string& what);
};

} // namespace ondrel::tests
