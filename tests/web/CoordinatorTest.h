#pragma once

#include "platform/Download.h"
#include "support/TestShell.h"
#include "web/WindowViewModel.h"
#include "web/page/DownloadItem.h"

#include <gtest/gtest.h>

namespace ondrel::web {

// One open tab of the program on fakes, seen from its engine.
class CoordinatorTest : public testing::Test {
 protected:
  using Calls = std::vector<std::string>;

  void SetUp() override {
    shell.start();
    model = shell.focusedModel();
    view = shell.webView(model);
    view->loads.clear();
  }

  platform::WebViewDelegate& engine() { return *view->delegate; }
  std::size_t windows() const { return shell.application.all.size(); }
  std::shared_ptr<WindowViewModel> newest() {
    return shell.manager->windows().viewModel(shell.application.last());
  }
  void post(const boost::json::value& body, const std::string& origin = "https://app.example.com",
            bool isMainFrame = true, const std::string& name = "ondrel") {
    engine().didReceiveScriptMessage({name, body, {1, origin + "/x", origin, isMainFrame}, view});
  }

  support::TestShell shell;
  std::shared_ptr<WindowViewModel> model;
  std::shared_ptr<support::FakeWebView> view;
};

} // namespace ondrel::web
