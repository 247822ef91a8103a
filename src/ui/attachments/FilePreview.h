#pragma once

#include "async/Timer.h"
#include "attachments/FilesViewModel.h"
#include "base/Event.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::ui {

// What shows one file at a time.
class PreviewPanel {
 public:
  // Whether there is a file before and behind the one that is shown.
  struct Neighbours {
    bool previous = false;
    bool next = false;
  };
  struct File {
    std::string path;
    std::string name;
    std::string mimeType;
  };

  virtual ~PreviewPanel() = default;
  // `neighbour` is called with -1 or 1 when the user asks for the file before or behind this one.
  virtual void show(const File& file, std::function<void(int step)> neighbour) = 0;
  virtual void showLoading(const std::string& name) = 0; // where it is open
  virtual void showError(const std::string& text) = 0;
  virtual void setNeighbours(Neighbours neighbours) = 0; // where it is open; there are none at first
  virtual bool isOpen() const = 0;
  virtual void close() = 0;

  base::Event<> closed; // by the user or by close()
};

// Hands the files of rows to the panel: the one that was asked for last, whichever comes first.
class FilePreview {
 public:
  struct Rows {
    // Selects the row beside the selected one and tells it; null where there is none.
    std::function<const jmap::AttachmentInfo*(int step)> step;
    std::function<PreviewPanel::Neighbours()> neighbours; // of the selected row
  };
  // The files and the panel outlive it.
  FilePreview(attachments::FilesViewModel& files, PreviewPanel& panel, Rows rows);
  ~FilePreview();
  FilePreview(const FilePreview&) = delete;
  FilePreview& operator=(const FilePreview&) = delete;

  void show(jmap::AttachmentInfo attachment);
  // The rows or the selection have changed.
  void followRows();

 private:
  void tellNeighbours();
  void arrived();
  void forget();
  void ended(const std::string& id);

  struct Wanted {
    jmap::AttachmentInfo attachment;
    bool isStarted; // else its row is busy with something else
  };

  attachments::FilesViewModel& files_;
  PreviewPanel& panel_;
  const Rows rows_;
  std::optional<Wanted> wanted_;
  std::vector<base::Subscription> subscriptions_;
  async::Timer later_;
};

} // namespace ondrel::ui
