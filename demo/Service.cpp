#include "demo/Service.h"

#include "demo/mail/AttachmentMail.h"
#include "demo/mail/SampleMail.h"
#include "demo/web/DataSurface.h"
#include "demo/web/WebAppSurface.h"

namespace ondrel::demo {

Service::Service()
    : web_([this](SoupServerMessage* message) {
        log_.note(http::Exchange(message));
        gate_.pass(message);
      }),
      controlServer_([this](SoupServerMessage* message) {
        http::Exchange exchange(message);
        control_.handle(exchange);
      }),
      jmap_({store_, isInLabelsMode_,
             [this](const std::string& method) {
               return faults_.take(method).transform([](const control::Fault& fault) { return fault.body; });
             }},
            signIn_, streams_),
      gate_(faults_, [this](SoupServerMessage* message) {
        http::Exchange exchange(message);
        exchange.setHeader("X-Frontend", "phl-demo-1");
        router_.dispatch(exchange);
      }) {
  mail::fillWithSampleMail(store_);
  store_.forgetChanges(); // what happened before the service began
  web::addWebApp(router_, store_, signIn_, announcement_);
  web::addData(router_, store_, signIn_);
  jmap_.addTo(router_);
}

void Service::addAttachmentMail(int emails) {
  if (emails > 0)
    mail::addAttachmentMail(store_, emails);
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
