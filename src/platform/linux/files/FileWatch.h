#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"

#include <gio/gio.h>

#include <functional>
#include <string>

namespace ondrel::platform::files {

// Follows one file, which may be missing: calls back when it is made, written, replaced or removed, and
// for each of these maybe several times. A link is followed to where it leads in the end.
class FileWatch {
 public:
  FileWatch(const std::string& path, std::function<void()> changed);

 private:
  struct Place {
    std::string path;
    glib::Ref<GFileMonitor> monitor;
    glib::Connection changed;
  };
  static Place watch(std::string path, std::function<void()> changed);
  void followLink();

  const std::function<void()> changed_;
  Place file_;
  Place target_; // nothing where the file is no link
};

} // namespace ondrel::platform::files
