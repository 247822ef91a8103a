#pragma once

#include "demo/MailStore.h"
#include "demo/Router.h"

namespace ondrel::demo {

// The host of what other people wrote: attachments at /blob/<blobId>/<name>, sources of messages at
// /source/<emailId>. As with the real service, whoever knows the link may read it.
class UserContentSurface {
 public:
  explicit UserContentSurface(const MailStore& store) : store_(store) {}
  void addTo(Router& router);

 private:
  void blob(Exchange& exchange) const;
  void source(Exchange& exchange) const;

  const MailStore& store_;
};

} // namespace ondrel::demo
