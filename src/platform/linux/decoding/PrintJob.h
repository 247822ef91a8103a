#pragma once

#include "async/Future.h"
#include "async/Scope.h"
#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform::decoding {

// One document on its way to paper. Pages are drawn by the decoder in the resolution of the printer, while
// the main loop goes on. What is not finished when this object goes is cancelled.
class PrintJob {
 public:
  struct Options {
    DocumentKind kind;
    std::string name;
    std::string exportPath; // empty: ask the user
  };

  PrintJob(std::unique_ptr<DecodedDocument> document, const Options& options);
  ~PrintJob();
  PrintJob(const PrintJob&) = delete;
  PrintJob& operator=(const PrintJob&) = delete;

  // A text for the user when it has failed. Ends without one when the user cancels, or the parent goes before
  // the dialog is answered; null for no parent. Call it once.
  async::Task<std::optional<std::string>> run(GtkWindow* parent);

 private:
  using End = std::optional<std::string>;

  void connect(GtkWindow* parent);
  void start();
  void finish(GtkPrintOperationResult result);
  void turn(int page, GtkPageSetup* setup) const;
  async::Task<void> draw(glib::Ref<GtkPrintContext> context, int page);

  const std::unique_ptr<DecodedDocument> document_;
  const Options options_;
  const glib::Ref<GtkPrintOperation> operation_;
  std::optional<async::Resolver<End>> end_;
  std::optional<std::string> failure_;
  glib::WeakRef<GtkWindow> parent_;
  guint start_ = 0;
  bool isDone_ = false;
  bool isDrawing_ = false; // a page whose end the operation awaits
  const std::shared_ptr<int> alive_ = std::make_shared<int>();
  std::vector<glib::Connection> connections_;
  glib::Connection parentGone_;
  async::Scope scope_;
};

} // namespace ondrel::platform::decoding
