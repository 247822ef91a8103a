// Which frames of a real page reach the program's handlers: the engine and the coordinator together.
#include "jmap/NotificationManager.h"
#include "settings/AppSettings.h"
#include "support/FakeApplication.h"
#include "support/FakeDesktop.h"
#include "support/FakeHttpClient.h"
#include "support/FakeNotificationCenter.h"
#include "support/WebKitTest.h"
#include "web/MessageFiles.h"
#include "web/WebServices.h"
#include "web/WebView.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <fmt/format.h>

namespace ondrel::tests {

class TrustTest : public WebKitTest {
 protected:
  void SetUp() override {
    WebKitTest::SetUp();
    settings::Site site;
    site.webAppBaseURL = {server_.origin(service) + "/", "https://beta.example.com/"};
    settings_ = std::make_unique<settings::AppSettings>(defaults_, site);
    services_ = std::make_unique<web::WebServices>(*settings_, scripts_, application_, *factory_, panels_,
                                                   uriLauncher_, notifications_, messageFiles_);
    window_ = std::static_pointer_cast<support::FakeWindow>(application_.makeWindow({}));
  }
  void TearDown() override {
    tab_.reset();
    WebKitTest::TearDown();
  }

  // A tab of the program on a page of the service.
  void open(const std::string& html) {
    server_.serve("/page", html);
    model_ = web::WindowViewModel::make(*services_);
    model_->window = window_;
    model_->urlString.set(server_.url("/page", service));
    model_->webViewConfiguration = scripts_.mainConfiguration();
    model_->openInNewWindow = [this](const std::shared_ptr<web::WindowViewModel>& opened, bool) {
      opened_.push_back(*opened->urlString);
    };
    tab_ = std::make_unique<web::WebView>(model_, *services_);
    tab_->viewDidLoad();
    show(*model_->liveWebView());
  }

  // A document that posts what acts, and says on the console when it has.
  std::string acting(const std::string& name,
                     const std::string& types = "'compose', 'print', 'sendClicked', 'discardClicked'") {
    return fmt::format("<script>"
                       "const post = (message) => window.webkit.messageHandlers.ondrel.postMessage(message);"
                       "for (const type of [{1}])"
                       "  post({{type, targetAddress: '{2}/{0}'}});"
                       "post({{type: 'consoleLog', message: '{0} is done'}})"
                       "</script>",
                       name, types, server_.origin(service));
  }
  bool waitForLine(const std::string& line) {
    return waitFor([&] { return log_.count(line) == 1; });
  }

  static constexpr auto service = "mail.localhost";
  support::FakeDefaults defaults_;
  support::FakeApplication application_;
  support::FakePanels panels_;
  support::FakeUriLauncher uriLauncher_;
  support::FakeNotificationCenter notificationCenter_;
  jmap::NotificationManager notifications_{notificationCenter_};
  support::FakeHttpClient http_;
  support::FakeFiles files_;
  web::MessageFiles messageFiles_{http_, files_, files_, notifications_};
  // Of a page that has let go of its letter when it is asked.
  web::PageScripts scripts_{[](std::string_view name) {
    return name == "letterStateScript" ? std::optional<std::string>("'sent'") : std::nullopt;
  }};
  std::unique_ptr<settings::AppSettings> settings_;
  std::unique_ptr<web::WebServices> services_;
  std::shared_ptr<support::FakeWindow> window_;
  std::shared_ptr<web::WindowViewModel> model_;
  std::unique_ptr<web::WebView> tab_;
  std::vector<std::string> opened_;
};

TEST_F(TrustTest, OnlyFramesOfTheServiceAct) {
  server_.serve("/foreign", acting("foreign"));
  server_.serve("/sandboxed", acting("sandboxed"));
  open(fmt::format("<iframe src='{}'></iframe><iframe src='/sandboxed' sandbox='allow-scripts'></iframe>",
                   server_.url("/foreign")));
  for (const auto* name : {"foreign", "sandboxed"})
    ASSERT_TRUE(waitForLine(fmt::format("debug script: JS log: {} is done", name)));
  for (const auto* type : {"compose", "print", "sendClicked", "discardClicked"})
    for (const auto& origin : {server_.origin(), std::string("null")})
      EXPECT_EQ(log_.count(fmt::format("debug script: A message of type {} from a frame of {} was dropped",
                                       type, origin)),
                1);
  EXPECT_TRUE(opened_.empty());
  runFor(1600ms); // more than the time of grace after sending or discarding
  EXPECT_FALSE(window_->closed);

  // The same from a frame of the service, but for the print dialog.
  server_.serve("/own", acting("own", "'compose', 'sendClicked'"));
  std::ignore = run(model_->evaluate("document.body.append(Object.assign(document.createElement('iframe'),"
                                     "  {src: '/own'})); 0"));
  ASSERT_TRUE(waitForLine("debug script: JS log: own is done"));
  EXPECT_EQ(opened_, std::vector<std::string>{server_.url("/own", service)});
  EXPECT_TRUE(waitFor([&] { return window_->closed; }));
}

} // namespace ondrel::tests
