#pragma once

#include "base/Event.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace ondrel::platform {
struct FrameInfo;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {

class ScriptMessageFields;
class WindowViewModel;

// Who may send a message: any frame of any page can call the handler, so those that act are reached from the
// service's own origin only, and those that describe the page from its main frame too.
enum class Trust { anyFrame, mainFrameOrService, serviceOnly };

bool isTrusted(Trust trust, const platform::FrameInfo& frame, const settings::AppSettings& settings);

// The messages of page scripts that features take, by their type. A feature adds its rows and holds what it
// gets for them; a type is one feature's. Main thread only.
class ScriptMessageRouter {
 public:
  // Valid during the call.
  struct Received {
    const std::shared_ptr<WindowViewModel>& tab;
    const ScriptMessageFields& fields;
    const platform::FrameInfo& frame; // the sender
  };
  using Handler = std::function<void(const Received&)>;
  struct Route {
    Trust trust;
    Handler handle;
  };

  // Until the subscription goes.
  base::Subscription add(std::string type, Trust trust, Handler handler);
  // Null for a type that nobody takes.
  std::shared_ptr<const Route> find(std::string_view type) const;

 private:
  using Routes = std::map<std::string, std::shared_ptr<const Route>, std::less<>>;
  const std::shared_ptr<Routes> routes_ = std::make_shared<Routes>();
};

} // namespace ondrel::web
