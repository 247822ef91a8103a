#include "ui/attachments/AttachmentMenu.h"

#include "base/Translation.h"

namespace ondrel::ui {

using attachments::AttachmentCategory;

AttachmentMenu::AttachmentMenu(GtkWidget* parent, const attachments::FilesViewModel& files, Actions actions)
    : files_(files), parent_(parent), menu_(glib::adopt(g_menu_new())),
      group_(glib::adopt(g_simple_action_group_new())) {
  add("show-email", base::tr("Show Containing Email"), std::move(actions.showEmail));
  add("download", base::trIn("verb", "Download"), std::move(actions.download));
  add("print", base::trIn("verb", "Print"), std::move(actions.print));
  // TRANSLATORS: a verb, and the key for it
  add("preview", base::tr("Preview [Space bar]"), std::move(actions.preview));
  gtk_widget_insert_action_group(parent, "attachment", G_ACTION_GROUP(group_.get()));
  popover_ = gtk_popover_menu_new_from_model(G_MENU_MODEL(menu_.get()));
  gtk_widget_set_name(popover_, "attachment-menu");
  gtk_popover_set_has_arrow(GTK_POPOVER(popover_), FALSE);
  gtk_widget_set_parent(popover_, parent);
  connections_.push_back(
      glib::connect<void(GtkPopover*)>(GTK_POPOVER(popover_), "closed", [this](GtkPopover*) {
        if (const auto focus = focus_.lock())
          gtk_widget_grab_focus(focus.get());
      }));
}

AttachmentMenu::~AttachmentMenu() {
  connections_.clear();
  gtk_widget_insert_action_group(parent_, "attachment", nullptr);
  gtk_widget_unparent(popover_);
}

void AttachmentMenu::add(const char* name, const char* title, Actions::Action action) {
  g_menu_append(menu_.get(), title, (std::string("attachment.") + name).c_str());
  const auto simple = glib::adopt(g_simple_action_new(name, nullptr));
  connections_.push_back(glib::connect<void(GSimpleAction*, GVariant*)>(
      simple.get(), "activate", [this, action = std::move(action)](GSimpleAction*, GVariant*) {
        if (attachment_)
          action(*attachment_);
      }));
  g_action_map_add_action(G_ACTION_MAP(group_.get()), G_ACTION(simple.get()));
}

void AttachmentMenu::show(const jmap::AttachmentInfo& attachment, const GdkRectangle& at) {
  attachment_ = attachment;
  const bool isBusy = files_.isBusy(attachment.id);
  const bool mayPrint = isPrintable(files_.categoryOf(attachment));
  for (const auto* name : {"show-email", "download", "print", "preview"}) {
    auto* action = G_SIMPLE_ACTION(g_action_map_lookup_action(G_ACTION_MAP(group_.get()), name));
    g_simple_action_set_enabled(action, !isBusy && (mayPrint || std::string_view(name) != "print"));
  }
  gtk_popover_set_pointing_to(GTK_POPOVER(popover_), &at);
  focus_.set(gtk_root_get_focus(gtk_widget_get_root(parent_)));
  gtk_popover_popup(GTK_POPOVER(popover_));
}

} // namespace ondrel::ui
