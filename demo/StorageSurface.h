#pragma once

#include "demo/MailStore.h"
#include "demo/Router.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

// The files of the user: POST /data/upload?name=... with the bytes as body stores one, POST /data/share with
// its `blobId` gives the path of its link on the user-content host. What goes wrong is ordered at the
// control port.
class StorageSurface {
 public:
  StorageSurface(MailStore& store, const SignIn& signIn) : store_(store), signIn_(signIn) {}
  void addTo(Router& router);

 private:
  bool mayPost(Exchange& exchange) const;
  void upload(Exchange& exchange);
  void share(Exchange& exchange) const;

  MailStore& store_;
  const SignIn& signIn_;
};

} // namespace ondrel::demo
