#pragma once

#include "async/Scope.h"
#include "platform/desktop/GlobalShortcuts.h"
#include "platform/linux/desktop/MessageBus.h"

#include <functional>
#include <map>
#include <string>

namespace ondrel::platform::portal {

// Keys that the desktop keeps for the program by org.freedesktop.portal.GlobalShortcuts. The user has the
// last word on them in the desktop's own dialog, so the keys asked for are a proposal.
class PortalShortcuts final : public GlobalShortcuts {
 public:
  struct Options {
    std::string description; // what they do, for the desktop's dialog
    // The keys as the shortcuts standard of freedesktop.org writes them.
    std::function<std::string(const KeyCombination&)> triggerText;
    // Gets the desktop's token for a press before `performed` tells of it. May be empty.
    std::function<void(const std::string& token)> useActivationToken{};
  };
  explicit PortalShortcuts(Options options, desktop::BusConnector bus = desktop::sessionBus);
  ~PortalShortcuts() override;

  const base::Observable<bool>& isAvailable() const override { return isAvailable_; }
  async::Task<std::expected<std::string, std::string>> reserve(std::string name,
                                                               KeyCombination keys) override;
  void release(const std::string& name) override;

 private:
  async::Task<void> connect(desktop::BusConnector bus);
  async::Task<std::expected<std::string, std::string>> bind(std::string session, std::string name,
                                                            KeyCombination keys);
  void portalChanged(const std::string& owner);
  // Nothing comes of it when that isn't the portal any more.
  async::Task<void> askVersion(std::string owner);
  void activated(const std::string& sender, GVariant* arguments);
  void close(const std::string& session) const;

  const Options options_;
  base::Observable<bool> isAvailable_{false};
  glib::Ref<GDBusConnection> connection_;
  std::map<std::string, std::string> sessions_; // by name of the shortcut: a session takes its keys once
  std::string portal_;                          // who it is on the bus
  desktop::BusNameWatch nameWatch_;
  desktop::BusSubscription activations_;
  async::Scope scope_;
};

} // namespace ondrel::platform::portal
