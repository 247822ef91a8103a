#pragma once

#include "async/Task.h"
#include "platform/PageFiles.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <vector>

namespace ondrel::platform::pagefiles {

// What the user has dropped or pasted, sorted into what a page can have and what not.
struct FileInspection {
  std::vector<PageFile> files;
  std::vector<RefusedFile> refused;
};

// Looks at each file without opening a pipe or reading more than its type needs. Regular files of this
// machine that may be read pass.
async::Task<FileInspection> inspectFiles(std::vector<glib::Ref<GFile>> files);

} // namespace ondrel::platform::pagefiles
