#pragma once

namespace ondrel::platform {
class Window;
}

namespace ondrel::app {

// To the right (1) or to the left (-1) among its tabs; at the end it stays. The selected tab stays the same.
void moveTab(platform::Window& window, int step);

} // namespace ondrel::app
