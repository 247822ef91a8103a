#include "decoder/Pixels.h"

#include "platform/linux/glib/Connection.h"

#include <gio/gio.h>

#include <algorithm>
#include <optional>

// The only way through an animation's frames is in the toolkit's old kind of time.
G_GNUC_BEGIN_IGNORE_DEPRECATIONS

namespace ondrel::decoder {

namespace {

using glib::Ref;

constexpr std::int64_t mostPixels = 100'000'000;
constexpr std::size_t mostFrames = 2000;
constexpr int shortestDelay = 20; // milliseconds, as the modules correct it themselves

struct Size {
  int width;
  int height;
};

// What a loader made of the whole file.
struct Loaded {
  Ref<GdkPixbufAnimation> animation;
  bool isScalable = false; // drawn in any size
};

// In the size that the file names, or in another one.
Result<Loaded> load(GBytes* file, std::optional<Size> size) {
  const auto loader = glib::adopt(gdk_pixbuf_loader_new());
  bool isTooLarge = false;
  const auto prepared = glib::connect<void(GdkPixbufLoader*, int, int)>(
      loader.get(), "size-prepared", [&](GdkPixbufLoader* own, int width, int height) {
        isTooLarge = static_cast<std::int64_t>(width) * height > mostPixels;
        if (isTooLarge)
          gdk_pixbuf_loader_set_size(own, 0, 0); // the module gives up
        else if (size)
          gdk_pixbuf_loader_set_size(own, size->width, size->height);
      });
  glib::Error error;
  const bool isWritten = gdk_pixbuf_loader_write_bytes(loader.get(), file, error.out()) != FALSE;
  glib::Error closing;
  const bool isClosed = gdk_pixbuf_loader_close(loader.get(), closing.out()) != FALSE;
  const auto isFull = [](const glib::Error& each) {
    return each.matches(GDK_PIXBUF_ERROR, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY);
  };
  if (isTooLarge || isFull(error) || isFull(closing))
    return std::unexpected(Status::tooLarge);
  auto animation = glib::share(gdk_pixbuf_loader_get_animation(loader.get()));
  // What there is of a file that ends too soon is worth showing.
  if (!animation || (!(isWritten && isClosed) && !gdk_pixbuf_animation_get_static_image(animation.get())))
    return std::unexpected(Status::damaged);
  auto* format = gdk_pixbuf_loader_get_format(loader.get());
  return Loaded{std::move(animation), format && gdk_pixbuf_format_is_scalable(format)};
}

// Walks through the frames of an animation in order, again and again.
class Frames {
 public:
  explicit Frames(GdkPixbufAnimation* animation) : animation_(animation) { rewind(); }

  void rewind() {
    now_ = {};
    position_ = 0;
    iterator_ = glib::adopt(gdk_pixbuf_animation_get_iter(animation_, &now_));
  }
  int delay() const { return gdk_pixbuf_animation_iter_get_delay_time(iterator_.get()); }
  bool isLast() const { return gdk_pixbuf_animation_iter_on_currently_loading_frame(iterator_.get()); }
  void advance() {
    g_time_val_add(&now_, static_cast<glong>(std::max(delay(), shortestDelay)) * 1000);
    gdk_pixbuf_animation_iter_advance(iterator_.get(), &now_);
    ++position_;
  }
  // Borrowed, until the next call.
  GdkPixbuf* at(std::size_t frame) {
    if (frame < position_)
      rewind();
    while (position_ < frame)
      advance();
    return gdk_pixbuf_animation_iter_get_pixbuf(iterator_.get());
  }

 private:
  GdkPixbufAnimation* animation_;
  GTimeVal now_{};
  std::size_t position_ = 0;
  Ref<GdkPixbufAnimationIter> iterator_;
};

Result<Pixels> scaled(const GdkPixbuf* picture, int width, int height) {
  if (gdk_pixbuf_get_width(picture) == width && gdk_pixbuf_get_height(picture) == height)
    return pixelsOf(picture);
  const auto result = glib::adopt(gdk_pixbuf_scale_simple(picture, width, height, GDK_INTERP_BILINEAR));
  if (!result)
    return std::unexpected(Status::tooLarge);
  return pixelsOf(result.get());
}

PageDescription described(const GdkPixbuf* picture) {
  return {static_cast<float>(gdk_pixbuf_get_width(picture)),
          static_cast<float>(gdk_pixbuf_get_height(picture)), 0};
}

class StillImage final : public Document {
 public:
  StillImage(Ref<GdkPixbuf> picture, GBytes* drawing)
      : picture_(std::move(picture)), drawing_(drawing ? g_bytes_ref(drawing) : nullptr),
        pages_{described(picture_.get())} {}

  bool isAnimation() const override { return false; }
  const std::vector<PageDescription>& pages() const override { return pages_; }
  std::vector<PlacedCharacter> text(int) override { return {}; }
  Result<Pixels> render(int, int width, int height) override {
    if (drawing_) {
      const auto drawn = load(drawing_.get(), Size{width, height});
      auto* picture = drawn ? gdk_pixbuf_animation_get_static_image(drawn->animation.get()) : nullptr;
      if (picture)
        return scaled(picture, width, height);
    }
    return scaled(picture_.get(), width, height);
  }

 private:
  Ref<GdkPixbuf> picture_;
  glib::Owned<GBytes> drawing_; // the file, when it can be drawn in any size
  std::vector<PageDescription> pages_;
};

class AnimatedImage final : public Document {
 public:
  explicit AnimatedImage(Ref<GdkPixbufAnimation> animation)
      : animation_(std::move(animation)), frames_(animation_.get()) {
    auto page = PageDescription{static_cast<float>(gdk_pixbuf_animation_get_width(animation_.get())),
                                static_cast<float>(gdk_pixbuf_animation_get_height(animation_.get())), 0};
    bool isLast = false;
    while (!isLast && pages_.size() < mostFrames) {
      page.delay = static_cast<std::uint32_t>(std::max(frames_.delay(), 0));
      pages_.push_back(page);
      isLast = frames_.isLast();
      frames_.advance();
    }
    frames_.rewind();
  }

  bool isAnimation() const override { return pages_.size() > 1; }
  const std::vector<PageDescription>& pages() const override { return pages_; }
  std::vector<PlacedCharacter> text(int) override { return {}; }
  Result<Pixels> render(int page, int width, int height) override {
    const auto* picture = frames_.at(static_cast<std::size_t>(page));
    if (!picture)
      return std::unexpected(Status::damaged);
    return scaled(picture, width, height);
  }

 private:
  Ref<GdkPixbufAnimation> animation_;
  Frames frames_;
  std::vector<PageDescription> pages_;
};

} // namespace

void loadImageModules() {
  auto* formats = gdk_pixbuf_get_formats();
  for (auto* each = formats; each; each = each->next) {
    const glib::CString name(gdk_pixbuf_format_get_name(static_cast<GdkPixbufFormat*>(each->data)));
    if (const auto loader = glib::adopt(gdk_pixbuf_loader_new_with_type(name.get(), nullptr)))
      gdk_pixbuf_loader_close(loader.get(), nullptr); // of nothing: an error, and of no interest
  }
  g_slist_free(formats);
  // Kinds are told by the system's table of types, which is read at first use.
  const glib::CString type(g_content_type_guess("image.png", nullptr, 0, nullptr));
}

Result<std::unique_ptr<Document>> openImage(GBytes* file) {
  auto loaded = load(file, std::nullopt);
  if (!loaded)
    return std::unexpected(loaded.error());
  auto* animation = loaded->animation.get();
  if (!gdk_pixbuf_animation_is_static_image(animation))
    return std::make_unique<AnimatedImage>(std::move(loaded->animation));
  auto* picture = gdk_pixbuf_animation_get_static_image(animation);
  if (!picture)
    return std::unexpected(Status::damaged);
  auto turned = glib::adopt(gdk_pixbuf_apply_embedded_orientation(picture));
  if (!turned)
    return std::unexpected(Status::tooLarge);
  return std::make_unique<StillImage>(std::move(turned), loaded->isScalable ? file : nullptr);
}

} // namespace ondrel::decoder

G_GNUC_END_IGNORE_DEPRECATIONS
