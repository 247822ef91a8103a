#include "demo/Service.h"

#include "demo/DataSurface.h"
#include "demo/SampleMail.h"
#include "demo/WebAppSurface.h"

namespace ondrel::demo {

Service::Service()
    : web_([this](SoupServerMessage* message) {
        log_.note(Exchange(message));
        gate_.pass(message);
      }),
      controlServer_([this](SoupServerMessage* message) {
        Exchange exchange(message);
        control_.handle(exchange);
      }),
      jmap_({store_, isInLabelsMode_,
             [this](const std::string& method) {
               return faults_.take(method).transform([](const Fault& fault) { return fault.body; });
             }},
            signIn_, streams_),
      gate_(faults_, [this](SoupServerMessage* message) {
        Exchange exchange(message);
        router_.dispatch(exchange);
      }) {
  fillWithSampleMail(store_);
  store_.forgetChanges(); // what happened before the service began
  addWebApp(router_, store_, signIn_);
  addData(router_, store_, signIn_);
  jmap_.addTo(router_);
}

std::expected<void, std::string> Service::listen(std::uint16_t webPort, std::uint16_t controlPort) {
  const auto web = web_.listen(webPort);
  const auto control = web ? controlServer_.listen(controlPort) : web;
  if (!control)
    return std::unexpected(control.error());
  webPort_ = *web;
  controlPort_ = *control;
  return {};
}

} // namespace ondrel::demo
