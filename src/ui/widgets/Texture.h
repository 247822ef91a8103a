#pragma once

#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

namespace ondrel::ui {

// The picture for the toolkit. Shares its pixels; null for none.
glib::Ref<GdkTexture> textureOf(platform::PicturePointer picture);

} // namespace ondrel::ui
