#pragma once

#include "async/Future.h"
#include "async/Scope.h"
#include "highlights/HighlightDocument.h"
#include "platform/PassiveWebViewDelegate.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform {
class WebView;
class WebViewFactory;
} // namespace ondrel::platform

namespace ondrel::ui {

// Shows documents of highlights, one after the other, without taking the reader from the place that they had
// scrolled to.
class HighlightsPage final : private platform::PassiveWebViewDelegate {
 public:
  struct Events {
    std::function<void()> shown;
    std::function<void()> stopped; // its process has ended; reload() brings it back
    // A link to a page of the web was clicked.
    std::function<void(const std::string& url)> clicked;
  };

  HighlightsPage(platform::WebViewFactory& webViews, Events events);
  ~HighlightsPage() override;
  HighlightsPage(const HighlightsPage&) = delete;
  HighlightsPage& operator=(const HighlightsPage&) = delete;

  // With the place kept, the entry at the upper edge stays there, or the first one behind it that is still
  // listed. The last document counts.
  void show(highlights::HighlightDocument document, bool keepsPlace);
  void reload();

  void* widget() const; // borrowed

 private:
  struct Place {
    std::size_t entry = 0; // in the document that is shown
    double top = 0;        // of that entry, in CSS pixels from the window's upper edge
  };

  async::Task<void> draw();
  async::Task<std::optional<Place>> place();
  // Where the place is in another document.
  std::optional<Place> moved(const Place& place, const highlights::HighlightDocument& document) const;
  async::Task<void> scrollTo(Place place);
  void loaded();

  void decidePolicy(const platform::NavigationAction& action, platform::PolicyReply reply) override;
  void decidePolicy(const platform::NavigationResponse& response, platform::PolicyReply reply) override;
  void didCommit() override { events_.shown(); }
  void didFinish() override { loaded(); }
  void didFail(const platform::WebError&) override { loaded(); }
  void webProcessDidTerminate(bool) override;

  const Events events_;
  const std::shared_ptr<platform::WebView> webView_;
  highlights::HighlightDocument shown_;
  bool isShown_ = false;
  std::optional<highlights::HighlightDocument> next_;
  bool keepsPlace_ = true; // of all that have come since the last load
  bool isDrawing_ = false;
  std::optional<async::Resolver<bool>> loading_;
  async::Scope scope_;
};

} // namespace ondrel::ui
