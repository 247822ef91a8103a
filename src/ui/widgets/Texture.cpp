#include "ui/widgets/Texture.h"

#include <utility>

namespace ondrel::ui {

glib::Ref<GdkTexture> textureOf(platform::PicturePointer picture) {
  if (!picture)
    return nullptr;
  const auto release = [](gpointer shared) { delete static_cast<platform::PicturePointer*>(shared); };
  const auto& pixels = picture->pixels;
  const auto width = picture->width;
  const auto height = picture->height;
  auto* shared = new platform::PicturePointer(std::move(picture));
  const glib::Owned<GBytes> bytes(g_bytes_new_with_free_func(pixels.data(), pixels.size(), release, shared));
  return glib::adopt(gdk_memory_texture_new(width, height, GDK_MEMORY_R8G8B8A8_PREMULTIPLIED, bytes.get(),
                                            static_cast<gsize>(width) * 4));
}

} // namespace ondrel::ui
