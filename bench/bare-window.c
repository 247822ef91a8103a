// The measuring stick of bench/run: the smallest program that shows a page, with all the engine's defaults.
#include <webkit/webkit.h>

static void activate(GtkApplication* application, gpointer address) {
  GtkWidget* window = gtk_application_window_new(application);
  gtk_window_set_default_size(GTK_WINDOW(window), 870, 768);
  GtkWidget* view = webkit_web_view_new();
  gtk_window_set_child(GTK_WINDOW(window), view);
  webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), address);
  gtk_window_present(GTK_WINDOW(window));
}

int main(int argc, char** argv) {
  if (argc != 2) {
    g_printerr("Usage: bare-window ADDRESS\n");
    return 2;
  }
  GtkApplication* application =
      gtk_application_new("org.velmora.Ondrel.BareWindow", G_APPLICATION_DEFAULT_FLAGS);
  g_signal_connect(application, "activate", G_CALLBACK(activate), argv[1]);
  const int status = g_application_run(G_APPLICATION(application), 1, argv);
  g_object_unref(application);
  return status;
}
