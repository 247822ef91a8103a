#pragma once

#include <string>

namespace ondrel::platform {

enum class InjectionTime { documentStart, documentEnd };

// A program that the engine runs in the page's own world in each new document. Shared between web views.
struct UserScript {
  std::string name;
  std::string source;
  InjectionTime time = InjectionTime::documentEnd;
  bool mainFrameOnly = true;
};

} // namespace ondrel::platform
