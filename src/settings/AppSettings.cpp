#include "settings/AppSettings.h"

#include "base/Url.h"
#include "platform/UserDefaults.h"

namespace ondrel::settings {

AppSettings::AppSettings(platform::UserDefaults& defaults, Site site)
    : defaults_(defaults), site_(std::move(site)) {
}

bool AppSettings::get(const Key<bool>& key) const {
  return defaults_.boolean(key.name).value_or(key.fallback);
}

void AppSettings::set(const Key<bool>& key, bool value) {
  defaults_.set(key.name, value);
}

double AppSettings::get(const Key<double>& key) const {
  return defaults_.number(key.name).value_or(key.fallback);
}

void AppSettings::set(const Key<double>& key, double value) {
  defaults_.set(key.name, value);
}

FastmailEnvironment AppSettings::currentEnvironment() const {
  return defaults_.string(keys::fastmailEnvironment) == site_.webAppBaseURL.beta
             ? FastmailEnvironment::beta
             : FastmailEnvironment::production;
}

void AppSettings::setEnvironment(FastmailEnvironment environment) {
  defaults_.set(keys::fastmailEnvironment, webAppBaseURL(environment));
}

const std::string& AppSettings::webAppBaseURL(FastmailEnvironment environment) const {
  return environment == FastmailEnvironment::beta ? site_.webAppBaseURL.beta : site_.webAppBaseURL.production;
}

const std::string& AppSettings::jmapSessionURL(FastmailEnvironment environment) const {
  return environment == FastmailEnvironment::beta ? site_.jmapSessionURL.beta
                                                  : site_.jmapSessionURL.production;
}

bool AppSettings::isServiceOrigin(const std::string& origin) const {
  const auto url = base::Url::parse(origin);
  if (!url)
    return false;
  for (const auto* own : {&site_.webAppBaseURL.production, &site_.webAppBaseURL.beta})
    if (const auto ownUrl = base::Url::parse(*own); ownUrl && ownUrl->sameOrigin(*url))
      return true;
  return false;
}

double AppSettings::defaultPageZoom() const {
  const auto zoom = get(keys::defaultPageZoom);
  return zoom >= keys::smallestDefaultZoom && zoom <= keys::largestDefaultZoom
             ? zoom
             : keys::defaultPageZoom.fallback;
}

std::string AppSettings::highlightTagName() const {
  auto name = defaults_.string(keys::highlightTagName.name).value_or("");
  return name.empty() ? std::string(keys::highlightTagName.fallback) : name;
}

std::int64_t AppSettings::mcpServerPort() const {
  const auto port = defaults_.integer(keys::mcpServerPort.name).value_or(keys::mcpServerPort.fallback);
  return port < 1 ? keys::mcpServerPort.fallback : port;
}

SettingsTab AppSettings::selectedSettingsTab() const {
  return settingsTab(defaults_.string(keys::selectedSettingsTab.name).value_or(""))
      .value_or(SettingsTab::general);
}

void AppSettings::setSelectedSettingsTab(SettingsTab tab) {
  defaults_.set(keys::selectedSettingsTab.name, std::string(rawValue(tab)));
}

} // namespace ondrel::settings
