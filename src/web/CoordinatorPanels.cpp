#include "web/Coordinator.h"

#include "platform/Panels.h"
#include "web/WebServices.h"

namespace ondrel::web {

void Coordinator::runAlertPanel(const std::string& message, platform::DoneReply reply) {
  scope_.spawn(answerAlert(message, std::move(reply)));
}

async::Task<void> Coordinator::answerAlert(std::string message, platform::DoneReply reply) {
  co_await services_.panels.runAlert({std::move(message), {}, platform::AlertStyle::informational, {"OK"}},
                                     window());
  std::move(reply)(true);
}

void Coordinator::runConfirmPanel(const std::string& message, platform::DoneReply reply) {
  scope_.spawn(answerConfirm(message, std::move(reply)));
}

async::Task<void> Coordinator::answerConfirm(std::string message, platform::DoneReply reply) {
  platform::Alert alert{std::move(message), {}, platform::AlertStyle::informational, {"Yes", "No"}};
  const auto response = co_await services_.panels.runAlert(std::move(alert), window());
  std::move(reply)(response == platform::Panels::firstButton);
}

void Coordinator::runOpenPanel(const platform::OpenPanelParameters& parameters, platform::FilesReply reply) {
  scope_.spawn(answerOpenPanel(parameters, std::move(reply)));
}

async::Task<void> Coordinator::answerOpenPanel(platform::OpenPanelParameters parameters,
                                               platform::FilesReply reply) {
  platform::OpenPanel panel;
  panel.allowsMultipleSelection = parameters.allowsMultipleSelection;
  panel.mimeTypes = std::move(parameters.mimeTypes);
  auto files = co_await services_.panels.runOpenPanel(std::move(panel), window());
  std::move(reply)(std::move(files));
}

} // namespace ondrel::web
