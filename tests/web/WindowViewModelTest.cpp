#include "CoordinatorTest.h"

#include "async/Scope.h"
#include "web/RowSelector.h"

namespace ondrel::web {
namespace {

using namespace std::chrono_literals;

using WindowViewModelTest = CoordinatorTest;

TEST_F(WindowViewModelTest, LoadsWhatTheAddressMeans) {
  const std::pair<std::string, std::string> cases[] = {
      {" \n app.example.com\t", "https://app.example.com"},
      {"\u00A0app.example.com\u2028", "https://app.example.com"},
      {"http://x/", "http://x/"},
      {"   ", ""},
      {"a b", ""},
      {"javascript:alert(1)", ""}, // no scheme hides in an address without ://
  };
  for (const auto& [address, loaded] : cases) {
    view->loads.clear();
    model->urlString.set(address);
    model->loadURL();
    EXPECT_EQ(view->loads, loaded.empty() ? Calls{} : Calls{loaded}) << address;
  }
}

TEST_F(WindowViewModelTest, ZoomHasItsLimits) {
  for (int i = 0; i < 4; ++i)
    model->zoomIn();
  EXPECT_DOUBLE_EQ(view->zoom, 1.2);
  EXPECT_FALSE(*model->canZoomIn) << "four sums of 0.05 come out above 1.2";
  model->zoomToActualSize();
  EXPECT_TRUE(*model->isZoomDefault);
  model->zoomBy(-100);
  EXPECT_DOUBLE_EQ(view->zoom, 0.8);
  EXPECT_FALSE(*model->canZoomOut || *model->isZoomDefault);
  for (const auto& [stored, used] : {std::pair(0.9, 0.9), {3.0, 1.0}, {std::nan(""), 1.0}}) {
    shell.settings.set(settings::keys::defaultPageZoom, stored);
    EXPECT_EQ(*WindowViewModel::make(shell.services)->initialPageZoom, used) << stored;
  }
}

TEST_F(WindowViewModelTest, WithoutAWebViewEverythingIsQuiet) {
  const auto lone = WindowViewModel::make(shell.services);
  async::Scope scope;
  scope.spawn(lone->setComposeInWindow(true));
  scope.spawn(lone->exportPDF());
  lone->loadURL();
  lone->goBack();
  lone->reload();
  lone->zoomIn();
  shell.settle();
  EXPECT_TRUE(shell.panels.savePanels.empty());
}

TEST_F(WindowViewModelTest, ExportsAPDFWithItsMargins) {
  model->title.set("Offer: 1/2");
  shell.panels.savePath = "/documents/offer.pdf";
  shell.manager->exportPDFActive();
  shell.settle();
  EXPECT_EQ(shell.panels.savePanels.at(0).proposedName, "Offer: 1-2.pdf");
  ASSERT_EQ(view->prints.size(), 1U);
  EXPECT_EQ(view->prints[0].pdfPath, "/documents/offer.pdf");
  EXPECT_EQ(view->prints[0].marginLeft + view->prints[0].marginTop, 40);
  EXPECT_EQ(model->downloads->at(0)->destination, "/documents/offer.pdf") << "the end is told there";

  shell.panels.savePath = std::nullopt;
  shell.manager->exportPDFActive();
  shell.settle();
  EXPECT_EQ(view->prints.size(), 1U) << "nothing was chosen";

  shell.panels.savePath = "/full/x.pdf";
  view->printResult = platform::PrintResult::failed;
  shell.manager->exportPDFActive();
  shell.settle();
  EXPECT_EQ(shell.panels.alerts.size(), 1U) << "the user asked for it and hears of the failure";
}

class SelectRowTest : public CoordinatorTest {
 protected:
  void select() { scope.spawn(selectRow("M1\"\\", "T1", model, shell.services)); }
  async::Scope scope;
};

TEST_F(SelectRowTest, StopsWhenThePageHasOpenedTheMessage) {
  int calls = 0;
  view->answer = [&](const std::string&) { return boost::json::value(++calls == 3); };
  select();
  shell.loop.advance(10s);
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(view->evaluations[0], R"(/* selectRowScript */("M1\"\\", "T1");)")
      << "ids go in as string literals";
}

TEST_F(SelectRowTest, GivesUpAfterTwentyAttemptsAndReloadsAPageThatNeverBooted) {
  for (const bool booted : {true, false}) {
    view->evaluations.clear();
    view->loads.clear();
    view->answer = [booted](const std::string& source) {
      return source.starts_with("!!") ? platform::ScriptResult(boost::json::value(booted))
                                      : std::unexpected(platform::ScriptError{});
    };
    select();
    shell.loop.advance(4999ms);
    EXPECT_EQ(view->evaluations.size(), 20U);
    shell.loop.advance(1ms);
    EXPECT_EQ(view->evaluations.size(), 21U);
    EXPECT_EQ(view->loads, booted ? Calls{} : Calls{"https://app.example.com/"});
    shell.loop.advance(60s);
    EXPECT_EQ(view->evaluations.size(), 21U);
  }
}

TEST_F(SelectRowTest, EndsQuietlyWithItsTab) {
  view->answer = [](const std::string&) { return boost::json::value(false); };
  select();
  shell.loop.advance(1s);
  model->window.lock()->close();
  view.reset();
  model.reset();
  shell.loop.advance(60s);
  EXPECT_EQ(scope.active(), 0U);
}

} // namespace
} // namespace ondrel::web
