#include "decoder/Pixels.h"

#include <cstddef>
#include <cstring>

namespace ondrel::decoder {

namespace {

std::uint8_t multiplied(unsigned colour, unsigned alpha) {
  return static_cast<std::uint8_t>((colour * alpha + 127) / 255);
}

std::size_t length(int width, int height) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
}

} // namespace

Pixels pixelsOf(cairo_surface_t* surface) {
  cairo_surface_flush(surface);
  const int width = cairo_image_surface_get_width(surface);
  const int height = cairo_image_surface_get_height(surface);
  const auto* rows = cairo_image_surface_get_data(surface);
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
  Pixels result(length(width, height));
  auto* to = result.data();
  for (int y = 0; y < height; ++y) {
    const auto* from = rows + static_cast<std::size_t>(y) * stride;
    for (int x = 0; x < width; ++x, from += 4, to += 4) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel, from, sizeof pixel);
      to[0] = static_cast<std::uint8_t>(pixel >> 16);
      to[1] = static_cast<std::uint8_t>(pixel >> 8);
      to[2] = static_cast<std::uint8_t>(pixel);
      to[3] = static_cast<std::uint8_t>(pixel >> 24);
    }
  }
  return result;
}

Pixels pixelsOf(const GdkPixbuf* picture) {
  const int width = gdk_pixbuf_get_width(picture);
  const int height = gdk_pixbuf_get_height(picture);
  const bool hasAlpha = gdk_pixbuf_get_has_alpha(picture) != FALSE;
  const int step = gdk_pixbuf_get_n_channels(picture);
  const auto* rows = gdk_pixbuf_read_pixels(picture);
  const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(picture));
  Pixels result(length(width, height));
  auto* to = result.data();
  for (int y = 0; y < height; ++y) {
    const auto* from = rows + static_cast<std::size_t>(y) * stride;
    for (int x = 0; x < width; ++x, from += step, to += 4) {
      const unsigned alpha = hasAlpha ? from[3] : 255;
      to[0] = multiplied(from[0], alpha);
      to[1] = multiplied(from[1], alpha);
      to[2] = multiplied(from[2], alpha);
      to[3] = static_cast<std::uint8_t>(alpha);
    }
  }
  return result;
}

} // namespace ondrel::decoder
