#include "ui/attachments/RowsArea.h"

#include <utility>

namespace ondrel::ui {

namespace {

struct RowsArea {
  GtkWidget parent;
  RowsAreaOwner* owner;
  // The scrolled window keeps the values; here they are what its protocol asks for.
  GtkAdjustment* adjustments[2];
  GtkScrollablePolicy policies[2];
};
struct RowsAreaClass {
  GtkWidgetClass parent;
};
enum Property { none, horizontal, vertical, horizontalPolicy, verticalPolicy };

GType rowsAreaType();

RowsArea* rowsArea(gpointer object) {
  return G_TYPE_CHECK_INSTANCE_CAST(object, rowsAreaType(), RowsArea);
}

GtkWidgetClass* parentClass() {
  return GTK_WIDGET_CLASS(g_type_class_peek_static(GTK_TYPE_WIDGET));
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec*) {
  auto* area = rowsArea(object);
  if (id >= horizontalPolicy)
    area->policies[id - horizontalPolicy] = static_cast<GtkScrollablePolicy>(g_value_get_enum(value));
  else
    g_set_object(&area->adjustments[id - horizontal], GTK_ADJUSTMENT(g_value_get_object(value)));
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec*) {
  const auto* area = rowsArea(object);
  if (id >= horizontalPolicy)
    g_value_set_enum(value, area->policies[id - horizontalPolicy]);
  else
    g_value_set_object(value, area->adjustments[id - horizontal]);
}

void measure(GtkWidget* widget, GtkOrientation orientation, int, int* minimum, int* natural, int*, int*) {
  const auto& width = rowsArea(widget)->owner->width;
  *minimum = *natural = orientation == GTK_ORIENTATION_HORIZONTAL && width ? width() : 0;
}

void allocate(GtkWidget* widget, int width, int height, int) {
  if (const auto& allocate = rowsArea(widget)->owner->allocate)
    allocate(width, height);
}

gboolean moveFocus(GtkWidget* widget, GtkDirectionType direction) {
  const auto& move = rowsArea(widget)->owner->moveFocus;
  return move && move(direction);
}

void dispose(GObject* object) {
  closeRowsArea(GTK_WIDGET(object));
  for (auto*& adjustment : rowsArea(object)->adjustments)
    g_clear_object(&adjustment);
  G_OBJECT_CLASS(parentClass())->dispose(object);
}

void finalize(GObject* object) {
  delete rowsArea(object)->owner;
  G_OBJECT_CLASS(parentClass())->finalize(object);
}

void initializeClass(gpointer klass, gpointer) {
  auto* object = G_OBJECT_CLASS(klass);
  object->set_property = setProperty;
  object->get_property = getProperty;
  object->dispose = dispose;
  object->finalize = finalize;
  auto* widget = GTK_WIDGET_CLASS(klass);
  widget->measure = measure;
  widget->size_allocate = allocate;
  widget->focus = moveFocus;
  g_object_class_override_property(object, horizontal, "hadjustment");
  g_object_class_override_property(object, vertical, "vadjustment");
  g_object_class_override_property(object, horizontalPolicy, "hscroll-policy");
  g_object_class_override_property(object, verticalPolicy, "vscroll-policy");
  gtk_widget_class_set_css_name(widget, "listview");
  gtk_widget_class_set_accessible_role(widget, GTK_ACCESSIBLE_ROLE_LIST);
}

void initialize(GTypeInstance* instance, gpointer) {
  reinterpret_cast<RowsArea*>(instance)->owner = new RowsAreaOwner();
}

GType rowsAreaType() {
  static const GType type = [] {
    const auto made =
        g_type_register_static_simple(GTK_TYPE_WIDGET, "OndrelRowsArea", sizeof(RowsAreaClass),
                                      initializeClass, sizeof(RowsArea), initialize, G_TYPE_FLAG_FINAL);
    const GInterfaceInfo scrollable{};
    g_type_add_interface_static(made, GTK_TYPE_SCROLLABLE, &scrollable);
    return made;
  }();
  return type;
}

} // namespace

glib::Ref<GtkWidget> makeRowsArea(RowsAreaOwner owner) {
  auto area = glib::share(GTK_WIDGET(g_object_new(rowsAreaType(), nullptr)));
  *rowsArea(area.get())->owner = std::move(owner);
  gtk_widget_set_overflow(area.get(), GTK_OVERFLOW_HIDDEN);
  gtk_widget_add_css_class(area.get(), "view");
  return area;
}

void closeRowsArea(GtkWidget* area) {
  *rowsArea(area)->owner = {};
  while (auto* child = gtk_widget_get_first_child(area))
    gtk_widget_unparent(child);
}

} // namespace ondrel::ui
