#pragma once

#include "platform/ContextMenu.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace ondrel::platform {
struct NavigationAction;
class WebView;
} // namespace ondrel::platform

namespace ondrel::web {

class WindowViewModel;
struct WebServices;

// The context menu of a tab's page. Its links take the way of clicks. Main thread only.
class PageMenu {
 public:
  using Follow = std::function<void(const platform::NavigationAction& action)>;

  // The services outlive it. `follow` gets what stands for a click on a link, and checks it as one.
  PageMenu(std::weak_ptr<WindowViewModel> viewModel, std::weak_ptr<platform::WebView> webView,
           const WebServices& services, Follow follow);

  platform::ContextMenu rows(const platform::ContextHit& hit) const;
  void perform(platform::MenuAction action, const platform::ContextHit& hit, std::uint64_t gesture);

 private:
  bool opens(const std::string& link) const;
  void click(const std::string& link, unsigned modifiers, std::uint64_t gesture);

  const std::weak_ptr<WindowViewModel> viewModel_;
  const std::weak_ptr<platform::WebView> webView_;
  const WebServices& services_;
  const Follow follow_;
};

} // namespace ondrel::web
