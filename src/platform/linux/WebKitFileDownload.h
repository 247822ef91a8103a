#pragma once

#include "platform/Download.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <memory>
#include <vector>

namespace ondrel::platform {

// A download of the engine into a file. Holds itself until it has ended.
class WebKitFileDownload final : public Download, public std::enable_shared_from_this<WebKitFileDownload> {
 public:
  // For a download that has just begun, before the engine asks for its destination.
  static std::shared_ptr<WebKitFileDownload> make(WebKitDownload* download);

  void setDestinationHandler(DestinationHandler handler) override;
  Progress progress() const override;
  void cancel() override;

 private:
  explicit WebKitFileDownload(WebKitDownload* download);
  void connectSignals();
  void askForDestination(const char* suggestedName);
  void end();

  glib::Ref<WebKitDownload> download_;
  DestinationHandler handler_;
  bool hasFailed_ = false;
  std::shared_ptr<WebKitFileDownload> self_;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::platform
