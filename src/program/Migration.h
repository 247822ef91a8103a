#pragma once

#include <string>

namespace ondrel::platform {
struct ProgramInfo;
class Directories;
class FileStore;
class UserDefaults;
} // namespace ondrel::platform

namespace ondrel::program {

// Clears what older builds have left, once for each build, and remembers the running one.
void migrate(const platform::ProgramInfo& programInfo, platform::UserDefaults& defaults,
             platform::Directories& directories, platform::FileStore& files);

} // namespace ondrel::program
