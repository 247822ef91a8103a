#include "platform/linux/decoding/PrintJob.h"

#include "base/Log.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "platform/linux/text/SafeText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace ondrel::platform::decoding {

namespace {

constexpr base::Logger logger("ui");

constexpr double pointsPerPixel = 72.0 / 96.0; // of an image
// Finer than this no eye sees a difference in, and each page has to be sent.
constexpr double finestResolution = 300; // dots an inch
constexpr double pointsPerInch = 72;
constexpr const char* failureText = base::trMark("The file could not be printed. It may be damaged.");

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

// In cairo's order of bytes, on white where it can be seen through: printers know no transparency.
Surface surfaceOf(const Picture& picture) {
  Surface result(cairo_image_surface_create(CAIRO_FORMAT_RGB24, picture.width, picture.height),
                 cairo_surface_destroy);
  if (cairo_surface_status(result.get()) != CAIRO_STATUS_SUCCESS)
    return {nullptr, cairo_surface_destroy};
  auto* rows = cairo_image_surface_get_data(result.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(result.get()));
  const auto* from = picture.pixels.data();
  for (int y = 0; y < picture.height; ++y) {
    auto* to = reinterpret_cast<std::uint32_t*>(rows + static_cast<std::size_t>(y) * stride);
    for (int x = 0; x < picture.width; ++x, from += 4) {
      const std::uint32_t paper = 255U - from[3];
      const auto channel = [paper](std::uint8_t value) { return std::min(value + paper, 255U); };
      *to++ = channel(from[0]) << 16 | channel(from[1]) << 8 | channel(from[2]);
    }
  }
  cairo_surface_mark_dirty(result.get());
  return result;
}

} // namespace

PrintJob::PrintJob(std::unique_ptr<DecodedDocument> document, const Options& options)
    : document_(std::move(document)), options_(options), operation_(glib::adopt(gtk_print_operation_new())) {
  auto* operation = operation_.get();
  const auto name = text::boundedUtf8(options_.name, 200);
  gtk_print_operation_set_job_name(operation, name.c_str());
  // Of a file that it is printed to; the dialog adds the extension.
  const auto settings = glib::adopt(gtk_print_settings_new());
  gtk_print_settings_set(settings.get(), GTK_PRINT_SETTINGS_OUTPUT_BASENAME,
                         base::safeFileName(name.substr(0, name.rfind('.')), "output").c_str());
  gtk_print_operation_set_print_settings(operation, settings.get());
  gtk_print_operation_set_n_pages(operation, options_.kind == DocumentKind::pdf ? document_->pageCount() : 1);
  gtk_print_operation_set_unit(operation, GTK_UNIT_POINTS);
  gtk_print_operation_set_embed_page_setup(operation, TRUE);
  gtk_print_operation_set_allow_async(operation, TRUE);
}

void PrintJob::connect(GtkWindow* parent) {
  auto* operation = operation_.get();
  connections_.push_back(glib::connect<void(GtkPrintOperation*, GtkPrintContext*, int, GtkPageSetup*)>(
      operation, "request-page-setup",
      [this](GtkPrintOperation*, GtkPrintContext*, int page, GtkPageSetup* setup) { turn(page, setup); }));
  connections_.push_back(glib::connect<void(GtkPrintOperation*, GtkPrintContext*, int)>(
      operation, "draw-page", [this](GtkPrintOperation* self, GtkPrintContext* context, int page) {
        gtk_print_operation_set_defer_drawing(self);
        isDrawing_ = true;
        scope_.spawn(draw(glib::share(context), page));
      }));
  connections_.push_back(glib::connect<void(GtkPrintOperation*, GtkPrintOperationResult)>(
      operation, "done", [this](GtkPrintOperation*, GtkPrintOperationResult result) {
        isDone_ = true;
        finish(result);
      }));
  if (!parent)
    return;
  // The dialog goes with it, and then says nothing any more. Once the dialog has been answered, the window
  // isn't needed.
  parentGone_ = glib::connect<void(GtkWidget*)>(
      parent, "unrealize", [this](GtkWidget*) { finish(GTK_PRINT_OPERATION_RESULT_CANCEL); });
  connections_.push_back(glib::connect<void(GtkPrintOperation*, GtkPrintContext*)>(
      operation, "begin-print", [this](GtkPrintOperation*, GtkPrintContext*) { parentGone_.disconnect(); }));
}

PrintJob::~PrintJob() {
  if (start_ != 0)
    g_source_remove(start_);
  connections_.clear();
  parentGone_.disconnect();
  // It goes on by itself otherwise, and would wait for the page for ever.
  if (!isDone_)
    gtk_print_operation_cancel(operation_.get());
  if (isDrawing_)
    gtk_print_operation_draw_page_finish(operation_.get());
}

async::Task<std::optional<std::string>> PrintJob::run(GtkWindow* parent) {
  auto [resolver, future] = async::makeFuture<End>();
  end_.emplace(std::move(resolver));
  connect(parent);
  parent_.set(parent);
  // Not from a task: the toolkit exports in a main loop of its own, in which tasks must go on.
  const GSourceFunc start = [](gpointer self) -> gboolean {
    static_cast<PrintJob*>(self)->start_ = 0;
    static_cast<PrintJob*>(self)->start();
    return G_SOURCE_REMOVE;
  };
  start_ = g_idle_add(start, this);
  auto end = co_await std::move(future);
  co_return end.value_or(std::nullopt);
}

void PrintJob::start() {
  const auto operation = operation_;
  const auto parent = parent_.lock();
  const bool asks = options_.exportPath.empty();
  gtk_print_operation_set_show_progress(operation.get(), parent ? TRUE : FALSE);
  if (!asks)
    gtk_print_operation_set_export_filename(operation.get(), options_.exportPath.c_str());
  // This object may be gone when this returns.
  const std::weak_ptr<int> alive = alive_;
  const auto result = gtk_print_operation_run(
      operation.get(), asks ? GTK_PRINT_OPERATION_ACTION_PRINT_DIALOG : GTK_PRINT_OPERATION_ACTION_EXPORT,
      parent.get(), nullptr);
  if (result != GTK_PRINT_OPERATION_RESULT_IN_PROGRESS && !alive.expired())
    finish(result);
}

void PrintJob::finish(GtkPrintOperationResult result) {
  auto end = std::exchange(end_, std::nullopt);
  if (!end)
    return;
  if (result == GTK_PRINT_OPERATION_RESULT_ERROR && !failure_) {
    glib::Error error;
    gtk_print_operation_get_error(operation_.get(), error.out());
    failure_ = base::trFormat("The file could not be printed: {}", text::boundedUtf8(error.message(), 300));
  }
  if (failure_)
    logger.error("Printing failed: {}", *failure_);
  end->resolve(failure_);
}

void PrintJob::turn(int page, GtkPageSetup* setup) const {
  if (options_.kind != DocumentKind::pdf)
    return;
  const bool isWide = document_->pageWidth(page) > document_->pageHeight(page);
  const bool isPaperWide = gtk_page_setup_get_page_width(setup, GTK_UNIT_POINTS) >
                           gtk_page_setup_get_page_height(setup, GTK_UNIT_POINTS);
  if (isWide != isPaperWide)
    gtk_page_setup_set_orientation(setup,
                                   isWide ? GTK_PAGE_ORIENTATION_LANDSCAPE : GTK_PAGE_ORIENTATION_PORTRAIT);
}

async::Task<void> PrintJob::draw(glib::Ref<GtkPrintContext> context, int page) {
  const double unit = options_.kind == DocumentKind::pdf ? 1 : pointsPerPixel;
  const double width = document_->pageWidth(page) * unit;
  const double height = document_->pageHeight(page) * unit;
  const double roomWidth = gtk_print_context_get_width(context.get());
  const double roomHeight = gtk_print_context_get_height(context.get());
  const double scale = std::min({1.0, roomWidth / width, roomHeight / height});

  const double resolution = std::clamp(gtk_print_context_get_dpi_x(context.get()), 150.0, finestResolution);
  double pixels = scale * resolution / pointsPerInch;
  if (options_.kind == DocumentKind::image)
    pixels = std::min(pixels, 1 / pointsPerPixel); // what it has
  pixels = std::min(pixels, std::sqrt(DecodedDocument::mostPixels / (width * height)));
  const auto picture = co_await document_->render(page, std::max(1, static_cast<int>(width * pixels)),
                                                  std::max(1, static_cast<int>(height * pixels)));
  const auto surface = picture ? surfaceOf(**picture) : Surface(nullptr, cairo_surface_destroy);
  if (surface) {
    auto* painter = gtk_print_context_get_cairo_context(context.get());
    cairo_save(painter);
    cairo_translate(painter, (roomWidth - width * scale) / 2, (roomHeight - height * scale) / 2);
    cairo_scale(painter, width * scale / (*picture)->width, height * scale / (*picture)->height);
    cairo_set_source_surface(painter, surface.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(painter), CAIRO_FILTER_GOOD);
    cairo_rectangle(painter, 0, 0, (*picture)->width, (*picture)->height);
    cairo_fill(painter);
    cairo_restore(painter);
  } else {
    failure_ = base::tr(failureText);
    gtk_print_operation_cancel(operation_.get());
  }
  isDrawing_ = false;
  gtk_print_operation_draw_page_finish(operation_.get());
}

} // namespace ondrel::platform::decoding
