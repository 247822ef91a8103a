#include "web/ScriptMessageRouter.h"

#include "platform/FrameInfo.h"
#include "settings/AppSettings.h"

#include <cassert>
#include <utility>

namespace ondrel::web {

bool isTrusted(Trust trust, const platform::FrameInfo& frame, const settings::AppSettings& settings) {
  if (trust == Trust::anyFrame || (trust == Trust::mainFrameOrService && frame.isMainFrame))
    return true;
  return settings.isServiceOrigin(frame.origin);
}

base::Subscription ScriptMessageRouter::add(std::string type, Trust trust, Handler handler) {
  const auto added =
      routes_->emplace(type, std::make_shared<const Route>(Route{trust, std::move(handler)})).second;
  assert(added && "a type is one feature's");
  return added ? base::Subscription([weak = std::weak_ptr(routes_), type = std::move(type)] {
    if (const auto routes = weak.lock())
      routes->erase(type);
  })
               : base::Subscription();
}

std::shared_ptr<const ScriptMessageRouter::Route> ScriptMessageRouter::find(std::string_view type) const {
  const auto found = routes_->find(type);
  return found == routes_->end() ? nullptr : found->second;
}

} // namespace ondrel::web
