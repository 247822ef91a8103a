#include "ui/page/AnnouncementBanner.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "integrations/AnnouncementService.h"
#include "platform/linux/glib/Connection.h"
#include "ui/widgets/SideOrBelow.h"
#include "ui/widgets/Widgets.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace ondrel::ui {

namespace {

using integrations::Announcement;

// The page is what the window is for.
constexpr int mostLines = 8;

struct Look {
  const char* styleClass;
  const char* icon;
  const char* word; // for those who see neither
};

Look lookOf(Announcement::Severity severity) {
  switch (severity) {
  case Announcement::Severity::info:
    // TRANSLATORS: the kind of an announcement
    return {"announcement-info", "dialog-information-symbolic", base::tr("Information")};
  case Announcement::Severity::warning:
    return {"announcement-warning", "dialog-warning-symbolic", base::tr("Warning")};
  case Announcement::Severity::critical:
    break;
  }
  return {"announcement-critical", "dialog-error-symbolic", base::tr("Important")};
}

class AnnouncementBanner {
 public:
  AnnouncementBanner(integrations::AnnouncementService& announcements, GtkRevealer* place)
      : announcements_(announcements), place_(glib::share(place)),
        changes_(announcements.visible.observe([this] { update(); })) {
    update();
  }

 private:
  void update();
  GtkWidget* bar(const Announcement& announcement);
  GtkWidget* messageLabel(const std::string& text);
  GtkWidget* button(GtkWidget* button, std::function<void()> clicked);

  integrations::AnnouncementService& announcements_;
  const glib::Ref<GtkRevealer> place_;
  const base::Subscription changes_;
  std::vector<glib::Connection> connections_; // of what the bar holds
};

void AnnouncementBanner::update() {
  const auto& announcement = *announcements_.visible;
  if (announcement) {
    connections_.clear();
    gtk_revealer_set_child(place_.get(), bar(*announcement));
  }
  gtk_revealer_set_reveal_child(place_.get(), announcement.has_value());
}

GtkWidget* AnnouncementBanner::bar(const Announcement& announcement) {
  const auto look = lookOf(announcement.severity);
  const auto text = base::shortDisplayLine(announcement.message);
  auto* icon = gtk_image_new_from_icon_name(look.icon);
  gtk_widget_set_valign(icon, GTK_ALIGN_CENTER);
  setAccessibleLabel(icon, look.word);
  auto* content = messageLabel(text);
  if (announcement.link)
    content = sideOrBelow(content, button(gtk_button_new_with_label(base::tr("More Info")),
                                          [this] { announcements_.openLink(); }));
  gtk_widget_set_hexpand(content, TRUE);
  auto* close =
      button(gtk_button_new_from_icon_name("window-close-symbolic"), [this] { announcements_.dismiss(); });
  gtk_widget_add_css_class(close, "flat");
  gtk_widget_set_tooltip_text(close, base::tr("Close"));
  setAccessibleLabel(close, base::tr("Close"));

  auto* row = GTK_WIDGET(
      g_object_new(GTK_TYPE_BOX, "spacing", 12, "accessible-role", GTK_ACCESSIBLE_ROLE_ALERT, nullptr));
  gtk_widget_set_name(row, "announcement-bar");
  gtk_widget_add_css_class(row, "announcement");
  gtk_widget_add_css_class(row, look.styleClass);
  // TRANSLATORS: read aloud, as "Warning: The service will be down tonight."
  setAccessibleLabel(row, base::trFormat("{0}: {1}", look.word, text));
  for (auto* each : {icon, content, close})
    gtk_box_append(GTK_BOX(row), each);
  return row;
}

GtkWidget* AnnouncementBanner::messageLabel(const std::string& text) {
  auto* label = wrappedLabel(text.c_str());
  gtk_label_set_lines(GTK_LABEL(label), mostLines);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  connections_.push_back(tipWhereCut(label));
  return label;
}

GtkWidget* AnnouncementBanner::button(GtkWidget* button, std::function<void()> clicked) {
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  connections_.push_back(glib::connect<void(GtkButton*)>(
      button, "clicked", [clicked = std::move(clicked)](GtkButton*) { clicked(); }));
  return button;
}

} // namespace

base::Subscription showAnnouncements(integrations::AnnouncementService& announcements, GtkRevealer* place) {
  return base::Subscription(
      [banner = std::make_shared<AnnouncementBanner>(announcements, place)]() mutable { banner.reset(); });
}

} // namespace ondrel::ui
