#include "web/Coordinator.h"

#include "web/HighlightReceiver.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

// What the highlight scripts of a page report, handed on. A message that lacks what it needs is ignored.

namespace ondrel::web {

void Coordinator::messageChanged(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  const auto* internalId = fields.find("internalId");
  if (services_.highlights && viewModel && internalId)
    services_.highlights->messageChanged(viewModel, *internalId);
}

void Coordinator::containersChanged(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  const auto count = fields.integer("count");
  if (services_.highlights && viewModel && count)
    services_.highlights->containersChanged(viewModel, *count, fields.integer("focusedIndex"));
}

void Coordinator::highlightHostReady(const ScriptMessageFields&, const Message& message) {
  const auto viewModel = viewModel_.lock();
  if (services_.highlights && viewModel)
    services_.highlights->hostReady(viewModel, message.frame);
}

void Coordinator::highlightCreate(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  const auto* anchorJSON = fields.find("anchorJSON");
  const auto containerIndex = fields.integer("containerIndex");
  if (services_.highlights && viewModel && anchorJSON && containerIndex)
    services_.highlights->create(viewModel, *anchorJSON, *containerIndex);
}

void Coordinator::highlightRemove(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  const auto* highlightId = fields.find("highlightId");
  const auto containerIndex = fields.integer("containerIndex");
  if (services_.highlights && viewModel && highlightId && containerIndex)
    services_.highlights->remove(viewModel, *highlightId, *containerIndex);
}

void Coordinator::highlightClearOrphaned(const ScriptMessageFields& fields, const Message&) {
  const auto viewModel = viewModel_.lock();
  const auto* idsJSON = fields.find("idsJSON");
  const auto containerIndex = fields.integer("containerIndex");
  if (services_.highlights && viewModel && idsJSON && containerIndex)
    services_.highlights->clearOrphaned(viewModel, *idsJSON, *containerIndex);
}

void Coordinator::mailboxMarkersReady(const ScriptMessageFields&, const Message&) {
  const auto viewModel = viewModel_.lock();
  if (services_.highlights && viewModel)
    services_.highlights->mailboxMarkersReady(viewModel);
}

} // namespace ondrel::web
