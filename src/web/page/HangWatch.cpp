#include "web/page/HangWatch.h"

#include "platform/WebView.h"

namespace ondrel::web {

void HangWatch::setResponsive(bool responsive) {
  if (responsive_ == responsive)
    return;
  responsive_ = responsive;
  if (responsive)
    forget();
  else
    timer_ = async::Timer(patience - platform::WebView::silenceNoticed, [this] { tellHang(); });
}

void HangWatch::wait() {
  forget();
  if (!responsive_)
    timer_ = async::Timer(patience, [this] { tellHang(); });
}

void HangWatch::tellHang() {
  // A page whose process has ended hangs no more.
  if (problem_->kind != PageProblem::Kind::processTerminated)
    problem_.set({PageProblem::Kind::unresponsive, {}});
}

void HangWatch::forget() {
  timer_.stop();
  if (problem_->kind == PageProblem::Kind::unresponsive)
    problem_.set({});
}

} // namespace ondrel::web
