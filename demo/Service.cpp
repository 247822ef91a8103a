#include "demo/Service.h"

#include "demo/SampleMail.h"

namespace ondrel::demo {

Service::Service()
    : gate_([this](SoupServerMessage* message) {
        Exchange exchange(message);
        router_.dispatch(exchange);
      }),
      web_([this](SoupServerMessage* message) { serve(message); }),
      controlServer_([this](SoupServerMessage* message) {
        Exchange exchange(message);
        control_.handle(exchange);
      }) {
  fillWithSampleMail(store_);
  store_.forgetChanges(); // what happened before the service began
  store_.onChange([this] { streams_.changed(); });
  webApp_.addTo(router_);
  mailData_.addTo(router_);
  storage_.addTo(router_);
  userContent_.addTo(router_);
  jmap_.addTo(router_);
}

std::expected<void, std::string> Service::listen(std::uint16_t webPort, std::uint16_t controlPort) {
  const auto web = web_.listen(webPort);
  if (!web)
    return std::unexpected(web.error());
  const auto control = controlServer_.listen(controlPort);
  if (!control)
    return std::unexpected(control.error());
  webPort_ = *web;
  controlPort_ = *control;
  return {};
}

void Service::serve(SoupServerMessage* message) {
  const Exchange exchange(message);
  counters_.count(exchange.host(), exchange.path());
  requestLog_.note(exchange);
  gate_.pass(message);
}

} // namespace ondrel::demo
