#include "integrations/LoginItemManager.h"

#include "base/Log.h"
#include "platform/desktop/LoginItem.h"

namespace ondrel::integrations {

namespace {
constexpr base::Logger logger("system");
}

LoginItemManager::LoginItemManager(platform::LoginItem& service)
    : isEnabled(service.isEnabled()), service_(service),
      changes_(service.changed.subscribe([this] { isEnabled.set(service_.isEnabled()); })) {
}

void LoginItemManager::setEnabled(bool enabled) {
  scope_.spawn(toggle(enabled));
}

async::Task<void> LoginItemManager::toggle(bool enabled) {
  const auto done = co_await service_.setEnabled(enabled);
  if (!done)
    logger.error("Could not toggle login item: {}", done.error());
  isEnabled.set(service_.isEnabled());
  didToggle.emit();
}

} // namespace ondrel::integrations
