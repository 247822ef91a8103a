#include "platform/linux/webkit/WebKitPrinting.h"

#include "async/EventLoop.h"
#include "async/Future.h"
#include "base/Log.h"
#include "platform/linux/files/PendingFile.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtkunixprint.h>

#include <chrono>

namespace ondrel::platform::webkit {

namespace {

constexpr base::Logger logger("ui");

using Setup = glib::Ref<GtkPageSetup>;
using Job = glib::Ref<GtkPrintSettings>;

Setup pageSetup(const PrintSettings& settings) {
  auto setup = glib::adopt(gtk_page_setup_new());
  gtk_page_setup_set_top_margin(setup.get(), settings.marginTop, GTK_UNIT_POINTS);
  gtk_page_setup_set_bottom_margin(setup.get(), settings.marginBottom, GTK_UNIT_POINTS);
  gtk_page_setup_set_left_margin(setup.get(), settings.marginLeft, GTK_UNIT_POINTS);
  gtk_page_setup_set_right_margin(setup.get(), settings.marginRight, GTK_UNIT_POINTS);
  return setup;
}

// Absent when the path is none that an address can be made of.
Job fileJob(const std::string& path) {
  const glib::CString uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  if (!uri)
    return nullptr;
  auto job = glib::adopt(gtk_print_settings_new());
  // The engine looks for a printer by its name, which the toolkit translates.
  gtk_print_settings_set_printer(job.get(), g_dgettext("gtk40", "Print to File"));
  gtk_print_settings_set(job.get(), GTK_PRINT_SETTINGS_OUTPUT_URI, uri.get());
  gtk_print_settings_set(job.get(), GTK_PRINT_SETTINGS_OUTPUT_FILE_FORMAT, "pdf");
  return job;
}

// The toolkit lists what was printed to among the recent files, as soon as it has looked at it.
void correctRecentFile(const std::string& written, const std::optional<std::string>& shown) {
  constexpr std::chrono::seconds later{2};
  auto& loop = async::EventLoop::current();
  loop.schedule(loop.after(later), [written, shown] {
    const glib::CString from(g_filename_to_uri(written.c_str(), nullptr, nullptr));
    const glib::CString to(shown ? g_filename_to_uri(shown->c_str(), nullptr, nullptr) : nullptr);
    gtk_recent_manager_move_item(gtk_recent_manager_get_default(), from.get(), to.get(), nullptr);
  });
}

// Where a job of the dialog goes if it goes to a file of this machine.
std::optional<std::string> outputFile(GtkPrintSettings* job) {
  const auto* printer = gtk_print_settings_get_printer(job);
  const auto* uri = gtk_print_settings_get(job, GTK_PRINT_SETTINGS_OUTPUT_URI);
  if (!uri || g_strcmp0(printer, g_dgettext("gtk40", "Print to File")) != 0)
    return std::nullopt;
  const glib::CString path(g_filename_from_uri(uri, nullptr, nullptr));
  return path ? std::optional<std::string>(path.get()) : std::nullopt;
}

// The toolkit proposes the folder of documents for a file, also when that is not there and printing to it
// fails; null when it is.
const char* folderInsteadOfMissing() {
  const auto isThere = [](const char* folder) { return folder && g_file_test(folder, G_FILE_TEST_IS_DIR); };
  const auto* documents = g_get_user_special_dir(G_USER_DIRECTORY_DOCUMENTS);
  const auto* downloads = g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD);
  if (!documents || isThere(documents))
    return nullptr;
  return isThere(downloads) ? downloads : g_get_home_dir();
}

struct Choice {
  Job job;
  Setup setup;
};

// The print dialog, on screen for as long as this object lives. Our own and not the engine's, which runs a
// main loop inside.
class PrintDialog {
 public:
  PrintDialog(GtkWindow* parent, GtkPageSetup* setup, const std::string& name)
      : dialog_(glib::share(GTK_PRINT_UNIX_DIALOG(gtk_print_unix_dialog_new(nullptr, parent)))) {
    gtk_print_unix_dialog_set_page_setup(dialog_.get(), setup);
    gtk_print_unix_dialog_set_embed_page_setup(dialog_.get(), TRUE);
    const auto proposal = glib::adopt(gtk_print_settings_new());
    if (!name.empty())
      gtk_print_settings_set(proposal.get(), GTK_PRINT_SETTINGS_OUTPUT_BASENAME, name.c_str());
    if (const auto* folder = folderInsteadOfMissing())
      gtk_print_settings_set(proposal.get(), GTK_PRINT_SETTINGS_OUTPUT_DIR, folder);
    gtk_print_unix_dialog_set_settings(dialog_.get(), proposal.get());
    gtk_window_set_modal(GTK_WINDOW(dialog_.get()), TRUE);
    gtk_window_set_destroy_with_parent(GTK_WINDOW(dialog_.get()), TRUE);
  }
  PrintDialog(const PrintDialog&) = delete;
  PrintDialog& operator=(const PrintDialog&) = delete;
  ~PrintDialog() { gtk_window_destroy(GTK_WINDOW(dialog_.get())); }

  // Gives the response; one of its own when the dialog goes with its parent.
  async::Future<int> present() {
    auto [resolver, future] = async::makeFuture<int>();
    const auto answer = std::make_shared<async::Resolver<int>>(std::move(resolver));
    response_ = glib::connect<void(GtkDialog*, int)>(GTK_DIALOG(dialog_.get()), "response",
                                                     [answer](GtkDialog*, int id) { answer->resolve(id); });
    destroyed_ = glib::connect<void(GtkWidget*)>(GTK_WIDGET(dialog_.get()), "destroy", [answer](GtkWidget*) {
      answer->resolve(GTK_RESPONSE_DELETE_EVENT);
    });
    gtk_window_present(GTK_WINDOW(dialog_.get()));
    return std::move(future);
  }

  // What the user chose; absent without a printer.
  std::optional<Choice> choice() const {
    auto* printer = gtk_print_unix_dialog_get_selected_printer(dialog_.get());
    if (!printer)
      return std::nullopt;
    Choice result{glib::adopt(gtk_print_unix_dialog_get_settings(dialog_.get())),
                  glib::share(gtk_print_unix_dialog_get_page_setup(dialog_.get()))};
    gtk_print_settings_set_printer(result.job.get(), gtk_printer_get_name(printer));
    return result;
  }

 private:
  glib::Ref<GtkPrintUnixDialog> dialog_;
  glib::Connection response_;
  glib::Connection destroyed_;
};

async::Task<std::optional<Choice>> askUser(glib::Ref<WebKitWebView> view, Setup setup, std::string name) {
  auto* root = gtk_widget_get_root(GTK_WIDGET(view.get()));
  PrintDialog dialog(GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr, setup.get(), name);
  const auto response = co_await dialog.present();
  if (response != GTK_RESPONSE_OK)
    co_return std::nullopt;
  co_return dialog.choice();
}

async::Task<PrintResult> run(glib::Ref<WebKitPrintOperation> operation) {
  auto [resolver, future] = async::makeFuture<bool>();
  bool succeeded = true;
  const auto failed = glib::connect<void(WebKitPrintOperation*, GError*)>(
      operation.get(), "failed", [&succeeded](WebKitPrintOperation*, GError* error) {
        succeeded = false;
        logger.error("Printing failed: {}", error->message);
      });
  const auto finished = glib::connect<void(WebKitPrintOperation*)>(
      operation.get(), "finished",
      [answer = std::move(resolver)](WebKitPrintOperation*) mutable { answer.resolve(true); });
  webkit_print_operation_print(operation.get());
  const auto ended = co_await std::move(future);
  co_return ended&& succeeded ? PrintResult::done : PrintResult::failed;
}

} // namespace

async::Task<PrintResult> printView(glib::Ref<WebKitWebView> view, PrintSettings settings) {
  auto setup = pageSetup(settings);
  Job job;
  std::optional<files::PendingFile> file;
  if (settings.pdfPath) {
    auto made = files::PendingFile::make(*settings.pdfPath);
    if (made)
      job = fileJob(file.emplace(std::move(*made)).path());
    if (!job) {
      logger.error("The PDF can't be written: {}", made ? "its path makes no address" : made.error());
      co_return PrintResult::failed;
    }
  } else {
    const auto choice = co_await askUser(view, setup, settings.name);
    if (!choice)
      co_return PrintResult::cancelled;
    job = choice->job;
    setup = choice->setup;
    if (auto path = outputFile(job.get()); path && settings.writesFile)
      settings.writesFile(std::move(*path));
  }
  if (settings.arrange)
    co_await settings.arrange();
  const auto operation = glib::adopt(webkit_print_operation_new(view.get()));
  webkit_print_operation_set_page_setup(operation.get(), setup.get());
  webkit_print_operation_set_print_settings(operation.get(), job.get());
  auto result = co_await run(operation);
  if (!file)
    co_return result;
  if (result == PrintResult::done) {
    if (const auto moved = file->moveIntoPlace(); !moved) {
      logger.error("The PDF can't be written: {}", moved.error());
      result = PrintResult::failed;
    }
  }
  correctRecentFile(file->path(),
                    result == PrintResult::done ? settings.pdfPath : std::optional<std::string>());
  co_return result;
}

} // namespace ondrel::platform::webkit
