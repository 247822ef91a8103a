#pragma once

#include <string>
#include <vector>

namespace ondrel::platform::desktop {

enum class Rendering { hardware, software };

// Finds out whether the machine can draw with a GPU, without making a GL context, and sets the environment
// for the toolkit and the engine accordingly: where it can't, drawing by the processor alone takes less
// memory and time than GL in software. What the user has set in these variables stays.
// ONDREL_RENDERING=software or hardware decides instead. Call at the start of main(): before GTK and before
// other threads.
Rendering chooseRendering();

// The variables that chooseRendering() has set: for this program and its web processes, not for those that it
// starts.
const std::vector<std::string>& renderingVariables();

// A device for rendering that we may open and that stands for a real GPU.
bool hasRenderDevice();

} // namespace ondrel::platform::desktop
