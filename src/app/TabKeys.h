#pragma once

#include <memory>

namespace ondrel::platform {
struct KeyEvent;
class Window;
} // namespace ondrel::platform

namespace ondrel::app {

// The keys by which a user goes from tab to tab of the window that has the keyboard, which may be null. True
// when the key is one of them and nobody else shall see it.
bool takeTabKey(const platform::KeyEvent& event, const std::shared_ptr<platform::Window>& key);

} // namespace ondrel::app
