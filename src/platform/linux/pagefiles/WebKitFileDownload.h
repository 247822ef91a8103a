#pragma once

#include "platform/Download.h"
#include "platform/linux/files/PendingFile.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <memory>
#include <vector>

namespace ondrel::platform::pagefiles {

// A download of the engine into a file, which is at its destination when it is whole and not before. Holds
// itself until it has ended.
class WebKitFileDownload final : public Download, public std::enable_shared_from_this<WebKitFileDownload> {
 public:
  // For a download that has just begun, before the engine asks for its destination. The end of the
  // program is its end too.
  static std::shared_ptr<WebKitFileDownload> make(WebKitDownload* download, base::Event<>& programEnds);

  void setDestinationHandler(DestinationHandler handler) override;
  std::string suggestedFileName() const override;
  Progress progress() const override;
  void cancel() override;

 private:
  explicit WebKitFileDownload(WebKitDownload* download);
  void connectSignals();
  void askForDestination(const char* suggestedName);
  void write(const std::string& destination);
  std::string reason(const GError* error) const;
  void fail(const std::string& error);
  void end();

  glib::Ref<WebKitDownload> download_;
  DestinationHandler handler_;
  std::string suggestedName_;              // by the server, once it has answered
  std::optional<files::PendingFile> file_; // from the answer on
  std::string problem_;                    // why it was cancelled by us
  bool hasFailed_ = false;
  bool isCancelled_ = false;
  std::shared_ptr<WebKitFileDownload> self_;
  std::vector<glib::Connection> connections_;
  base::Subscription programEnd_;
};

} // namespace ondrel::platform::pagefiles
