#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

namespace ondrel::support {

// The first page of a PDF file as colours.
class PdfPage {
 public:
  static constexpr int scale = 2; // pixels a point

  static bool canBeDrawn() { return std::system("command -v pdftoppm >/dev/null") == 0; }
  // Draws it, into a file beside it; none when it is no PDF.
  static std::optional<PdfPage> draw(const std::filesystem::path& pdf) {
    const auto image = pdf.string() + ".image";
    const auto command = "pdftoppm -r " + std::to_string(72 * scale) + " -f 1 -singlefile '" + pdf.string() +
                         "' '" + image + "'";
    if (std::system(command.c_str()) != 0)
      return std::nullopt;
    std::ifstream file(image + ".ppm", std::ios::binary);
    PdfPage result;
    std::string format;
    int most = 0;
    file >> format >> result.width_ >> result.height_ >> most;
    file.get();
    result.rgb_.assign(std::istreambuf_iterator(file), {});
    const auto size = static_cast<std::size_t>(result.width_) * static_cast<std::size_t>(result.height_) * 3;
    return format == "P6" && most == 255 && result.rgb_.size() == size ? std::optional(result) : std::nullopt;
  }

  // Pixels from the paper's edges to the first that isn't white.
  struct Margins {
    int left;
    int top;
    int right;
    int bottom;
  };
  Margins margins() const {
    Margins result{width_, height_, width_, height_};
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x)
        if (!isWhite(x, y)) {
          result.left = std::min(result.left, x);
          result.top = std::min(result.top, y);
          result.right = std::min(result.right, width_ - 1 - x);
          result.bottom = std::min(result.bottom, height_ - 1 - y);
        }
    return result;
  }

 private:
  // Edges lie between pixels, and a faint one counts as paper.
  bool isWhite(int x, int y) const {
    const auto at = static_cast<std::size_t>(y * width_ + x) * 3;
    return std::ranges::all_of(rgb_.substr(at, 3),
                               [](char part) { return static_cast<unsigned char>(part) > 250; });
  }

  int width_ = 0;
  int height_ = 0;
  std::string rgb_;
};

} // namespace ondrel::support
