#pragma once

#include "async/Scope.h"
#include "platform/desktop/StatusItem.h"
#include "platform/linux/desktop/BusObject.h"
#include "platform/linux/desktop/MessageBus.h"
#include "platform/linux/desktop/OwnedBusName.h"

#include <memory>
#include <optional>

namespace ondrel::platform::panel {

class StatusMenu;

// The icon by org.kde.StatusNotifierItem, which the panels of most desktops show. It registers with the
// desktop's watcher, and anew with each that comes. What a wheel does above it is ignored.
class StatusNotifierItem final : public StatusItem {
 public:
  struct Options {
    std::string applicationId;
    std::string applicationName;
    // Gets the desktop's token for a click before `activated` or a row tells of it. May be empty.
    std::function<void(const std::string& token)> useActivationToken{};
    // A panel is about to show the menu, which belongs to the program all the same. When it closes, most
    // don't tell. May be empty.
    std::function<void()> menuOpens{};
  };
  // The bus is the session's: the menu is always there.
  explicit StatusNotifierItem(Options options, desktop::BusConnector bus = desktop::sessionBus);
  ~StatusNotifierItem() override;

  void setFace(Face face) override;
  void setMenu(std::vector<Row> rows) override;
  void setInserted(bool inserted) override;

 private:
  async::Task<void> connect(desktop::BusConnector bus);
  void insert();
  void remove();
  void watch(const std::string& name);
  async::Task<void> registerWith(std::string watcher, std::string name);
  void called(const std::string& method, GVariant* arguments);
  GVariant* property(const std::string& name) const;

  const Options options_;
  Face face_;
  std::vector<Row> rows_;
  bool inserted_ = false;
  int insertions_ = 0;
  glib::Ref<GDBusConnection> connection_;
  // While it is inserted.
  std::unique_ptr<StatusMenu> menu_;
  desktop::BusObject object_;
  desktop::OwnedBusName name_;
  desktop::BusNameWatch watcher_;
  async::TaskHandle registration_;
  async::Scope scope_;
};

} // namespace ondrel::platform::panel
