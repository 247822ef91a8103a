#pragma once

#include "async/Task.h"
#include "platform/PageFiles.h"
#include "platform/linux/files/FileLinks.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform::pagefiles {

// A place in a web view, in pixels of its widget.
struct ViewPoint {
  double x = 0;
  double y = 0;
  bool operator==(const ViewPoint&) const = default;
};

// Hands files of the user's to a page: the engine itself gives pages none on a drop or a paste since 2.50. A
// script in a world of its own lets the engine choose them for a file input that the page never sees, and
// dispatches the events that a page waits for with them. So the files stay on the disk until the page reads
// them: no byte goes through this process or waits in the page's, whatever their size. Must outlive its
// tasks.
class WebKitFileHandover {
 public:
  explicit WebKitFileHandover(WebKitWebView* view) : view_(view) {}

  // Whether the page takes a drop of such files there. Absent when it doesn't answer in time.
  async::Task<std::optional<bool>> over(ViewPoint place, std::vector<std::string> types);
  async::Task<void> leave();

  struct Answer {
    bool accepted = false;
    std::vector<std::size_t> lost; // indices of files that the engine could not open
  };
  // Absent when the page doesn't answer in time.
  async::Task<std::optional<Answer>> drop(std::vector<PageFile> files, ViewPoint place);
  async::Task<std::optional<Answer>> paste(std::vector<PageFile> files);
  async::Task<std::optional<Answer>> paste(PagePicture picture);

  // Chooses the files if it is this object's own input that asks; false for one of the page's.
  bool answers(WebKitFileChooserRequest* request);

 private:
  struct Call;
  async::Task<std::optional<Answer>> run(Call call);
  async::Task<std::optional<Answer>> hand(Call call, std::vector<PageFile> files);

  WebKitWebView* view_;
  files::FileLinks links_;                               // pages may read their files at any later time
  std::map<std::string, std::vector<std::string>> open_; // by token, the paths for an input
};

} // namespace ondrel::platform::pagefiles
