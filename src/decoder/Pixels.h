#pragma once

#include "decoder/Document.h"

#include <cairo.h>
#include <gdk-pixbuf/gdk-pixbuf.h>

namespace ondrel::decoder {

// Of an image surface in ARGB32.
Pixels pixelsOf(cairo_surface_t* surface);
Pixels pixelsOf(const GdkPixbuf* picture);

} // namespace ondrel::decoder
