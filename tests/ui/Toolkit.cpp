#include "Toolkit.h"

#include "support/Complaints.h"

namespace ondrel::ui {

namespace {

// Not before the tests run: listing them needs no display.
struct Toolkit final : testing::Environment {
  void SetUp() override {
    support::failOnComplaints();
    // What is said of the widgets is asked for, whoever listens on this desktop.
    g_setenv("GTK_A11Y", "test", TRUE);
    // Without a GPU, as on most machines that run tests: no driver is loaded, and none leaks.
    g_setenv("GSK_RENDERER", "cairo", FALSE);
    g_setenv("GDK_DEBUG", "gl-disable", FALSE);
    g_content_type_set_mime_dirs(nullptr); // as the program does, or GIO leaks
    ASSERT_TRUE(gtk_init_check()) << "these tests need a display";
    adw_init();
    // Waiting for the end of animations would be waiting in real time.
    g_object_set(gtk_settings_get_default(), "gtk-enable-animations", FALSE, nullptr);
  }
};

[[maybe_unused]] const auto* const toolkit = testing::AddGlobalTestEnvironment(new Toolkit);

// A row that is kept beside the view, not a page that the user can turn to.
bool isPutAway(GtkWidget* widget) {
  return !gtk_widget_get_child_visible(widget) && !ADW_IS_VIEW_STACK(gtk_widget_get_parent(widget));
}

void collectTexts(GtkWidget* widget, std::vector<std::string>& texts) {
  if (!gtk_widget_get_visible(widget) || isPutAway(widget) ||
      (GTK_IS_REVEALER(widget) && !gtk_revealer_get_reveal_child(GTK_REVEALER(widget))))
    return;
  if (GTK_IS_STACK(gtk_widget_get_parent(widget)) &&
      gtk_stack_get_visible_child(GTK_STACK(gtk_widget_get_parent(widget))) != widget)
    return;
  if (GTK_IS_LABEL(widget) && *gtk_label_get_text(GTK_LABEL(widget)))
    texts.emplace_back(gtk_label_get_text(GTK_LABEL(widget)));
  if (GTK_IS_INSCRIPTION(widget) && gtk_inscription_get_text(GTK_INSCRIPTION(widget)))
    texts.emplace_back(gtk_inscription_get_text(GTK_INSCRIPTION(widget)));
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    collectTexts(child, texts);
}

GtkWidget* findWhere(GtkWidget* widget, const std::function<bool(GtkWidget*)>& matches) {
  if (matches(widget))
    return widget;
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    if (auto* found = findWhere(child, matches))
      return found;
  return nullptr;
}

} // namespace

GtkWidget* find(GtkWidget* root, const std::string& name) {
  return findWhere(root, [&](GtkWidget* widget) { return name == gtk_widget_get_name(widget); });
}

std::vector<std::string> visibleTexts(GtkWidget* root) {
  std::vector<std::string> texts;
  collectTexts(root, texts);
  return texts;
}

GtkWidget* buttonWithLabel(GtkWidget* root, const std::string& label) {
  return findWhere(root, [&](GtkWidget* widget) {
    const char* shown = GTK_IS_BUTTON(widget) ? gtk_button_get_label(GTK_BUTTON(widget)) : nullptr;
    return GTK_IS_BUTTON(widget) && (shown ? label == shown : hasAccessibleLabel(widget, label));
  });
}

void click(GtkWidget* button) {
  g_signal_emit_by_name(button, "clicked");
}

bool hasAccessibleLabel(GtkWidget* widget, const std::string& label) {
  const glib::CString difference(gtk_test_accessible_check_property(
      GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str()));
  return !difference;
}

} // namespace ondrel::ui
