#include "web/page/PageDialogs.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "web/page/LeaveQuestion.h"

#include <utility>

namespace ondrel::web {

namespace {

// The toolkit lays out all of a text before it shows any.
constexpr std::size_t longestText = 2000; // bytes

std::string bounded(std::string text) {
  if (const auto cut = base::cutAtCharacter(text, longestText).size(); cut < text.size())
    text.replace(cut, std::string::npos, "…");
  return text;
}

std::string originOf(const std::string& address) {
  const auto url = base::Url::parse(address);
  return url && url->host() ? url->hostWithPort() : std::string();
}

std::string headingFor(const std::string& address) {
  const auto origin = originOf(address);
  // TRANSLATORS: {} is the host of a page; what it says follows
  return origin.empty() ? base::tr("This page says") : base::trFormat("{} says", bounded(origin));
}

} // namespace

void PageDialogs::alert(const std::string& address, std::string text, base::Reply<bool> reply) {
  if (maySpeak(address))
    show({.heading = headingFor(address), .text = bounded(std::move(text)), .buttons = {base::tr("OK")}},
         [reply = std::move(reply)](const PageDialogAnswer&) mutable { std::move(reply)(true); });
}

void PageDialogs::confirm(const std::string& address, std::string text, base::Reply<bool> reply) {
  if (maySpeak(address))
    show({.heading = headingFor(address),
          .text = bounded(std::move(text)),
          .buttons = {base::tr("Yes"), base::tr("No")},
          .escapeButton = 1},
         [reply = std::move(reply)](const PageDialogAnswer& answer) mutable {
           std::move(reply)(answer.button == 0);
         });
}

void PageDialogs::prompt(const std::string& address, std::string text, std::string field,
                         base::Reply<std::optional<std::string>> reply) {
  if (maySpeak(address))
    show({.heading = headingFor(address),
          .text = bounded(std::move(text)),
          .buttons = {base::tr("OK"), base::tr("Cancel")},
          .escapeButton = 1,
          .field = bounded(std::move(field))},
         [reply = std::move(reply)](const PageDialogAnswer& answer) mutable {
           std::move(reply)(answer.button == 0 ? std::optional(answer.text) : std::nullopt);
         });
}

void PageDialogs::leave(base::Reply<bool> reply) {
  if (mutes_ == 0)
    show({.heading = base::tr(leaveHeading),
          .text = base::tr(leaveText),
          .buttons = {base::tr(stayButton), base::tr(leaveButton)}},
         [reply = std::move(reply)](const PageDialogAnswer& answer) mutable {
           std::move(reply)(answer.button == 1);
         });
}

bool PageDialogs::maySpeak(const std::string& address) {
  if (silenced_ >= 0) {
    if (++silenced_ == flood && onFlood)
      onFlood();
    return false;
  }
  if (mutes_ > 0)
    return false;
  origin_ = originOf(address);
  return true;
}

void PageDialogs::show(PageDialog dialog, Answered answered) {
  if (*shown)
    return; // of a page that waits for one already
  if (dialog.heading != base::tr(leaveHeading))
    dialog.offersSilence = ++asked_ > 1;
  answered_ = std::move(answered);
  auto made = std::make_shared<PageDialog>(std::move(dialog));
  made->answer = [weakSelf = std::weak_ptr(self_),
                  asked = std::weak_ptr(made)](const PageDialogAnswer& answer) {
    const auto self = weakSelf.lock();
    if (self && *(*self)->shown == asked.lock())
      (*self)->finish(answer);
  };
  shown.set(std::move(made));
}

void PageDialogs::finish(const PageDialogAnswer& answer) {
  const auto dialog = *shown;
  auto answered = std::exchange(answered_, nullptr);
  shown.set(nullptr);
  if (answer.silence && dialog->offersSilence)
    silenced_ = 0;
  answered(answer);
}

void PageDialogs::dismiss() {
  const auto unanswered = std::exchange(answered_, nullptr);
  shown.set(nullptr);
}

void PageDialogs::userLoads() {
  asked_ = 0;
  silenced_ = -1;
  dismiss();
}

void PageDialogs::pageDidCommit(const std::string& address) {
  if (originOf(address) != origin_)
    userLoads();
  else
    dismiss();
}

base::Subscription PageDialogs::mute() {
  ++mutes_;
  dismiss();
  return base::Subscription([weakSelf = std::weak_ptr(self_)] {
    if (const auto self = weakSelf.lock())
      --(*self)->mutes_;
  });
}

} // namespace ondrel::web
