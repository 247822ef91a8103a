#include "ui/settings/SettingsWindow.h"

#include "base/Translation.h"
#include "integrations/DefaultEmailClient.h"
#include "integrations/SupportMail.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTab.h"
#include "ui/settings/BugReportSettingsView.h"
#include "ui/settings/DefaultMailSettingsView.h"
#include "ui/settings/DonationSettingsView.h"
#include "ui/settings/EnvironmentSettingsView.h"
#include "ui/settings/HighlightSettingsView.h"
#include "ui/settings/LoginItemSettingsView.h"
#include "ui/settings/MCPSettingsView.h"
#include "ui/settings/MissingServicesView.h"
#include "ui/settings/ScriptsSettingsView.h"
#include "ui/settings/ShortcutSettingsView.h"
#include "ui/settings/SpellingSettingsView.h"
#include "ui/settings/UISettingsView.h"
#include "ui/settings/UpdateSettingsView.h"
#include "ui/settings/UpdateStatusView.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

constexpr int width = 860; // room for the pages at the top
constexpr int height = 720;

using Section = std::unique_ptr<SettingsSection>; // null where there is nothing to offer

// The demonstration is nobody's mail application.
bool isInstalledForMail(const SettingsServices& services) {
  return services.defaultEmail.programInfo().isMailApplication;
}

Section defaultMail(const SettingsServices& services) {
  if (!isInstalledForMail(services))
    return nullptr;
  return std::make_unique<DefaultMailSettingsView>(services.defaultEmail, services.settings,
                                                   services.settings.site().projectFAQURL, services.openURL);
}

Section loginItem(const SettingsServices& services) {
  if (!isInstalledForMail(services))
    return nullptr;
  return std::make_unique<LoginItemSettingsView>(services.loginItem);
}

Section spelling(const SettingsServices& services) {
  return std::make_unique<SpellingSettingsView>(services.spelling, services.settings);
}

Section bugReport(const SettingsServices& services) {
  const auto& address = services.settings.site().supportAddress;
  if (address.empty())
    return nullptr;
  const auto url = integrations::supportMailURL(address, integrations::bugReportSubject);
  return std::make_unique<BugReportSettingsView>([open = services.openMailto, url] { open(url); });
}

Section missingServices(const SettingsServices& services) {
  return std::make_unique<MissingServicesView>(services.desktopServices);
}

Section userInterface(const SettingsServices& services) {
  return std::make_unique<UISettingsView>(services.settings, services.defaultEmail.programInfo().displayName);
}

Section environment(const SettingsServices& services) {
  return std::make_unique<EnvironmentSettingsView>(services.settings);
}

Section userScripts(const SettingsServices& services) {
  return std::make_unique<ScriptsSettingsView>(services.userScripts, services.settings);
}

Section highlights(const SettingsServices& services) {
  return std::make_unique<HighlightSettingsView>(services.settings, services.mail);
}

Section localServer(const SettingsServices& services) {
  return std::make_unique<MCPSettingsView>(services.mcp, services.openURL);
}

Section shortcutKeys(const SettingsServices& services) {
  return std::make_unique<ShortcutSettingsView>(services.shortcuts);
}

Section updateStatus(const SettingsServices& services) {
  return std::make_unique<UpdateStatusView>(services.updates);
}

Section updateSettings(const SettingsServices& services) {
  return std::make_unique<UpdateSettingsView>(services.updates, services.settings);
}

Section donation(const SettingsServices& services) {
  const auto& site = services.settings.site();
  return std::make_unique<DonationSettingsView>(services.defaultEmail.programInfo().displayName,
                                                site.coffeeURL, site.paypalURL, services.openURL);
}

struct Page {
  settings::SettingsTab tab;
  const char* title;
  const char* icon;
  std::vector<Section (*)(const SettingsServices&)> sections;
};

// In the order of the window.
const std::vector<Page>& pages() {
  static const std::vector<Page> table = {
      {settings::SettingsTab::general,
       base::tr("General"),
       "preferences-system-symbolic",
       {defaultMail, loginItem, spelling, bugReport, missingServices}},
      {settings::SettingsTab::userinterface,
       base::tr("User Interface"),
       "computer-symbolic",
       {userInterface}},
      {settings::SettingsTab::shortcuts,
       base::tr("Shortcuts"),
       "preferences-desktop-keyboard-shortcuts-symbolic",
       {shortcutKeys}},
      {settings::SettingsTab::update,
       base::trIn("noun", "Update"),
       "software-update-available-symbolic",
       {updateStatus, updateSettings}},
      {settings::SettingsTab::advanced,
       base::tr("Advanced"),
       "applications-engineering-symbolic",
       {environment, userScripts, highlights, localServer}},
      {settings::SettingsTab::donation, base::tr("Donation"), "emblem-favorite-symbolic", {donation}},
  };
  return table;
}

bool isInFrontOf(GtkWindow* window, const GtkWindow* other) {
  while (window && window != other)
    window = gtk_window_get_transient_for(window);
  return window != nullptr;
}

} // namespace

SettingsWindow::SettingsWindow(SettingsServices services, GtkApplication* application,
                               std::function<GtkWindow*()> parent)
    : services_(std::move(services)), application_(application), parent_(std::move(parent)) {
}

SettingsWindow::~SettingsWindow() {
  const auto window = window_;
  forget();
  if (window)
    gtk_window_destroy(window.get());
}

void SettingsWindow::show() {
  auto* parent = parent_(); // a new window would be the application's front one itself
  if (!window_)
    open();
  // Belonging to itself, by way of a question of its own too, would be a circle.
  if (!isInFrontOf(parent, window_.get()))
    gtk_window_set_transient_for(window_.get(), parent);
  gtk_window_present(window_.get());
}

void SettingsWindow::open() {
  window_ = glib::share(GTK_WINDOW(adw_preferences_window_new()));
  gtk_widget_set_name(GTK_WIDGET(window_.get()), "settings");
  gtk_window_set_title(window_.get(), base::tr("Settings"));
  gtk_window_set_default_size(window_.get(), width, height);
  gtk_window_set_application(window_.get(), application_);
  // The tabs behind it change with some settings: let them be seen, used and closed.
  gtk_window_set_modal(window_.get(), FALSE);
  gtk_window_set_destroy_with_parent(window_.get(), FALSE);
  nameToolkitControls(GTK_WIDGET(window_.get()));
  addPages();
  followPage();

  // Before the application's own keys: those would look for a tab.
  auto* keys = gtk_shortcut_controller_new();
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  gtk_shortcut_controller_add_shortcut(GTK_SHORTCUT_CONTROLLER(keys),
                                       gtk_shortcut_new(gtk_keyval_trigger_new(GDK_KEY_w, GDK_CONTROL_MASK),
                                                        gtk_named_action_new("window.close")));
  gtk_widget_add_controller(GTK_WIDGET(window_.get()), keys);

  closing_ =
      glib::connect<gboolean(GtkWindow*)>(window_.get(), "close-request", [this](GtkWindow*) -> gboolean {
        for (const auto& section : sections_)
          section->commit();
        forget();
        return FALSE; // the toolkit destroys it
      });
}

// The page that was open last is open again, and anybody may turn to another.
void SettingsWindow::followPage() {
  showChosenPage();
  pageTurned_ = glib::onNotify(window_.get(), "visible-page-name", [this] {
    const char* name = adw_preferences_window_get_visible_page_name(ADW_PREFERENCES_WINDOW(window_.get()));
    if (const auto tab = settings::settingsTab(name ? name : ""))
      services_.settings.setSelectedSettingsTab(*tab);
  });
  pageChosen_ = services_.settings.defaults().changed.subscribe([this](const std::string& key) {
    if (key == settings::keys::selectedSettingsTab.name)
      showChosenPage();
  });
}

void SettingsWindow::showChosenPage() {
  const std::string name(settings::rawValue(services_.settings.selectedSettingsTab()));
  if (shownPages_.contains(name))
    adw_preferences_window_set_visible_page_name(ADW_PREFERENCES_WINDOW(window_.get()), name.c_str());
}

void SettingsWindow::addPages() {
  for (const auto& page : pages()) {
    auto* widget = ADW_PREFERENCES_PAGE(adw_preferences_page_new());
    adw_preferences_page_set_name(widget, std::string(settings::rawValue(page.tab)).c_str());
    adw_preferences_page_set_title(widget, page.title);
    adw_preferences_page_set_icon_name(widget, page.icon);
    bool isEmpty = true;
    for (const auto make : page.sections)
      if (auto section = make(services_)) {
        adw_preferences_page_add(widget, section->group());
        sections_.push_back(std::move(section));
        isEmpty = false;
      }
    if (isEmpty) {
      g_object_ref_sink(widget);
      g_object_unref(widget);
      continue;
    }
    adw_preferences_window_add(ADW_PREFERENCES_WINDOW(window_.get()), widget);
    shownPages_.emplace(settings::rawValue(page.tab));
  }
}

void SettingsWindow::forget() {
  closing_ = {};
  pageTurned_ = {};
  pageChosen_.reset();
  sections_.clear();
  shownPages_.clear();
  window_ = nullptr;
}

} // namespace ondrel::ui
