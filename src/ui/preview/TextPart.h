#pragma once

#include "async/Task.h"
#include "platform/linux/glib/Ref.h"
#include "ui/preview/PreviewPart.h"

#include <cstddef>
#include <memory>
#include <string>

namespace ondrel::ui {

// A text file, to read and to copy from. HTML is text too: nothing in it is loaded or run.
class TextPart final : public PreviewPart {
 public:
  static constexpr std::size_t longestText = std::size_t{2} << 20; // bytes that are shown

  // Null for what can't be read or is no text.
  static async::Task<std::unique_ptr<PreviewPart>> open(std::string path, std::string label);

  TextPart(const std::string& text, bool isCut, const std::string& label);

  GtkWidget* widget() const override { return widget_.get(); }
  bool scroll(int step) override;

 private:
  glib::Ref<GtkWidget> widget_;
  GtkAdjustment* vertical_;
};

} // namespace ondrel::ui
