#include "integrations/DefaultEmailClient.h"

#include "base/Translation.h"
#include "platform/UriLauncher.h"
#include "platform/desktop/DefaultMailHelper.h"

#include <utility>

namespace ondrel::integrations {

bool isDefaultEmailClient(const platform::UriLauncher& uriLauncher,
                          const platform::ProgramInfo& programInfo) {
  const auto handler = uriLauncher.defaultApplicationForScheme("mailto");
  return handler && !programInfo.identifier.empty() && *handler == programInfo.identifier;
}

DefaultEmailClient::DefaultEmailClient(platform::DefaultMailHelper& helper,
                                       const platform::UriLauncher& uriLauncher,
                                       platform::ProgramInfo programInfo)
    : helper_(helper), uriLauncher_(uriLauncher), programInfo_(std::move(programInfo)) {
}

void DefaultEmailClient::update() {
  isDefault.set(isDefaultEmailClient(uriLauncher_, programInfo_));
}

void DefaultEmailClient::setAsDefault() {
  if (*isSettingDefault)
    return;
  isSettingDefault.set(true);
  setDefaultError.set(std::nullopt);
  scope_.spawn(setAsDefaultEmailClient(
      [this](bool success, const std::optional<std::string>& error) { didSet(success, error); }));
}

async::Task<void> DefaultEmailClient::setAsDefaultEmailClient(DefaultEmailCompletion completion) {
  if (programInfo_.identifier.empty()) {
    completion(false, base::tr("No bundle identifier"));
    co_return;
  }
  const auto answer = co_await helper_.setAsDefaultMailClient(programInfo_.identifier);
  const bool hasText = !answer && !answer.error().empty();
  completion(answer.has_value(), hasText ? std::optional(answer.error()) : std::nullopt);
}

void DefaultEmailClient::didSet(bool success, const std::optional<std::string>& error) {
  isSettingDefault.set(false);
  update();
  if (!success)
    setDefaultError.set(error.value_or(base::tr("Unknown error")));
}

} // namespace ondrel::integrations
