#include "highlights/HighlightSettingsModel.h"

#include "base/Translation.h"
#include "jmap/mail/MailQueries.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"

#include <utility>

namespace ondrel::highlights {

namespace keys = settings::keys;

HighlightSettingsModel::HighlightSettingsModel(settings::AppSettings& settings, jmap::MailQueries& mail)
    : settings_(settings), settingChanges_(settings.defaults().changed.subscribe([this](const auto& key) {
        if (key == keys::highlightTagEnabled.name || key == keys::highlightTagName.name)
          changed.emit();
      })) {
  scope_.spawn(fetchMode(&mail));
}

async::Task<void> HighlightSettingsModel::fetchMode(jmap::MailQueries* mail) {
  const auto mode = co_await mail->fetchInLabelsMode();
  if (!mode)
    co_return; // the words for an unknown account stay
  inLabelsMode_ = *mode;
  changed.emit();
}

bool HighlightSettingsModel::enabled() const {
  return settings_.get(keys::highlightTagEnabled);
}

void HighlightSettingsModel::setEnabled(bool enabled) {
  settings_.set(keys::highlightTagEnabled, enabled);
}

std::string HighlightSettingsModel::tagName() const {
  return settings_.defaults().string(keys::highlightTagName.name).value_or(std::string(namePrompt()));
}

void HighlightSettingsModel::setTagName(std::string name) {
  settings_.defaults().set(keys::highlightTagName.name, std::move(name));
}

std::string_view HighlightSettingsModel::namePrompt() {
  return keys::highlightTagName.fallback;
}

std::string_view HighlightSettingsModel::enableText() const {
  return hasFolders() ? base::tr("Automatically add highlighted email to Folder")
                      : base::tr("Automatically label highlighted threads in Ondrel");
}

std::string_view HighlightSettingsModel::nameText() const {
  return hasFolders() ? base::tr("Folder name:") : base::tr("Label name:");
}

std::string_view HighlightSettingsModel::footnote() const {
  return hasFolders() ? base::tr("Must match a folder you've already created in Fastmail.")
                      : base::tr("Must match a label you've already created in Fastmail.");
}

} // namespace ondrel::highlights
