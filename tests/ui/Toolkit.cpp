#include "Toolkit.h"

#include "base/Translation.h"
#include "support/Complaints.h"
#include "support/PseudoLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <clocale>

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

PseudoLocale::PseudoLocale() {
  static const support::TemporaryFolder folder;
  static const bool isMade = support::makePseudoLocale(folder.path());
  EXPECT_TRUE(isMade);
  std::setlocale(LC_MESSAGES, "C.UTF-8");
  g_setenv("LANGUAGE", "pseudo", TRUE);
  base::useTranslations(folder.path());
  auto* settings = gtk_settings_get_default();
  g_object_get(settings, "gtk-xft-dpi", &dpi_, nullptr);
  g_object_set(settings, "gtk-xft-dpi", 2 * 96 * 1024, nullptr);
  gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL);
}

PseudoLocale::~PseudoLocale() {
  gtk_widget_set_default_direction(GTK_TEXT_DIR_LTR);
  g_object_set(gtk_settings_get_default(), "gtk-xft-dpi", dpi_, nullptr);
  g_unsetenv("LANGUAGE");
  base::useTranslations("/nonexistent");
}

void expectTranslated(GtkWidget* root, const std::set<std::string>& others) {
  for (const auto& text : visibleTexts(root))
    EXPECT_TRUE(support::isTranslated(text) || others.contains(text)) << text;
  expectUncut(root);
}

void expectUncut(GtkWidget* root) {
  const auto width = static_cast<float>(gtk_widget_get_width(root));
  findWhere(root, [&](GtkWidget* widget) {
    if (!GTK_IS_LABEL(widget) || !gtk_widget_get_mapped(widget) || gtk_widget_get_width(widget) == 0)
      return false;
    const std::string text = gtk_label_get_text(GTK_LABEL(widget));
    auto* parent = gtk_widget_get_parent(widget);
    // The names of pages and windows may be, where there are many, and what the pointer brings up as a whole.
    const bool mayBeCut =
        gtk_widget_get_ancestor(widget, ADW_TYPE_HEADER_BAR) ||
        gtk_widget_get_ancestor(widget, ADW_TYPE_VIEW_SWITCHER) ||
        gtk_widget_get_has_tooltip(GTK_IS_TEXT(parent) ? gtk_widget_get_parent(parent) : widget);
    const bool isCut = pango_layout_is_ellipsized(gtk_label_get_layout(GTK_LABEL(widget)));
    EXPECT_FALSE(isCut && !mayBeCut && text.contains("⟦")) << text << " is cut";
    graphene_rect_t bounds;
    if (gtk_widget_compute_bounds(widget, root, &bounds))
      EXPECT_TRUE(bounds.origin.x >= 0 && bounds.origin.x + bounds.size.width <= width)
          << text << " is outside";
    return false;
  });
}

void expectReadable(GtkWidget* root) {
  auto* clock = gtk_widget_get_frame_clock(root);
  for (int frames = 0; frames < 3; ++frames) {
    const auto before = gdk_frame_clock_get_frame_counter(clock);
    gtk_widget_queue_draw(root);
    EXPECT_TRUE(runUntil([&] { return gdk_frame_clock_get_frame_counter(clock) > before; }));
  }
  // A window's frame is outside.
  auto* content = ADW_IS_WINDOW(root) ? adw_window_get_content(ADW_WINDOW(root)) : root;
  int least = 0;
  gtk_widget_measure(content, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
  EXPECT_LE(least, 360);
  expectUncut(root);
}

bool hasAccessibleLabel(GtkWidget* widget, const std::string& label) {
  const glib::CString difference(gtk_test_accessible_check_property(
      GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str()));
  return !difference;
}

} // namespace ondrel::ui
