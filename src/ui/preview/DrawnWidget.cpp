#include "ui/preview/DrawnWidget.h"

namespace ondrel::ui {

namespace {

struct DrawnWidget {
  GtkWidget parent;
  DrawWidget* draw;
};
struct DrawnWidgetClass {
  GtkWidgetClass parent;
};

GType drawnWidgetType();

DrawnWidget* drawnWidget(gpointer object) {
  return G_TYPE_CHECK_INSTANCE_CAST(object, drawnWidgetType(), DrawnWidget);
}

void snapshot(GtkWidget* widget, GtkSnapshot* into) {
  if (const auto* draw = drawnWidget(widget)->draw; draw && *draw)
    (*draw)(into);
}

void finalize(GObject* object) {
  delete drawnWidget(object)->draw;
  G_OBJECT_CLASS(g_type_class_peek_static(GTK_TYPE_WIDGET))->finalize(object);
}

void initializeClass(gpointer klass, gpointer) {
  G_OBJECT_CLASS(klass)->finalize = finalize;
  GTK_WIDGET_CLASS(klass)->snapshot = snapshot;
  gtk_widget_class_set_accessible_role(GTK_WIDGET_CLASS(klass), GTK_ACCESSIBLE_ROLE_IMG);
}

GType drawnWidgetType() {
  static const GType type =
      g_type_register_static_simple(GTK_TYPE_WIDGET, "OndrelDrawnWidget", sizeof(DrawnWidgetClass),
                                    initializeClass, sizeof(DrawnWidget), nullptr, G_TYPE_FLAG_FINAL);
  return type;
}

} // namespace

glib::Ref<GtkWidget> makeDrawnWidget(DrawWidget draw) {
  auto widget = glib::share(GTK_WIDGET(g_object_new(drawnWidgetType(), nullptr)));
  drawnWidget(widget.get())->draw = new DrawWidget(std::move(draw));
  gtk_widget_set_focusable(widget.get(), TRUE);
  return widget;
}

void stopDrawing(GtkWidget* drawn) {
  *drawnWidget(drawn)->draw = nullptr;
}

} // namespace ondrel::ui
