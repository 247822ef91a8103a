#include "platform/linux/files/DefaultsWatch.h"

#include "platform/linux/files/JsonUserDefaults.h"

#include <chrono>

namespace ondrel::platform::files {

namespace {

// Editors write, rename and set the mode in a row.
constexpr std::chrono::milliseconds settlingTime{100};

} // namespace

DefaultsWatch::DefaultsWatch(JsonUserDefaults& defaults)
    : defaults_(defaults), file_(defaults.file().path().value(), [this] {
        settled_ = async::Timer(settlingTime, [this] { defaults_.reread(); });
      }) {
}

} // namespace ondrel::platform::files
