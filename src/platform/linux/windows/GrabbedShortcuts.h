#pragma once

#include "platform/desktop/GlobalShortcuts.h"
#include "platform/linux/glib/Connection.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::platform::windows {

// Keys reserved at the X server, which gives each combination to one program. On other desktops there are
// none. Made when there is a display.
class GrabbedShortcuts final : public GlobalShortcuts {
 public:
  GrabbedShortcuts();
  ~GrabbedShortcuts() override;

  const base::Observable<bool>& isAvailable() const override { return isAvailable_; }
  async::Task<std::expected<std::string, std::string>> reserve(std::string name,
                                                               KeyCombination keys) override;
  void release(const std::string& name) override;

 private:
  // In the X server's terms.
  struct Grab {
    unsigned keycode = 0;
    unsigned modifiers = 0;      // without the lock keys
    std::vector<unsigned> locks; // the variants by what the lock keys may be at
    bool operator==(const Grab&) const = default;
  };
  struct Shortcut {
    KeyCombination keys;
    Grab grab;
    bool isDown = false;
  };
  std::expected<void, std::string> grab(const std::string& name, const KeyCombination& keys);
  bool take(const Grab& grab) const; // all of it or nothing
  void giveBack(const Grab& grab) const;
  bool handle(void* event); // whether it was for us
  void keyboardChanged();

  base::Observable<bool> isAvailable_{false};
  glib::Connection events_;
  std::map<std::string, Shortcut> shortcuts_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // for what is posted
};

} // namespace ondrel::platform::windows
