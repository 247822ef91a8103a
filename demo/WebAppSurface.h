#pragma once

#include "demo/AccessTokens.h"
#include "demo/MailStore.h"
#include "demo/Router.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

// The pages of the web application and the files that they are made of, sign-in and downloads.
class WebAppSurface {
 public:
  WebAppSurface(const MailStore& store, SignIn& signIn, AccessTokens& tokens)
      : store_(store), signIn_(signIn), tokens_(tokens) {}
  void addTo(Router& router);

 private:
  void page(Exchange& exchange) const;
  void printView(Exchange& exchange) const;
  void messageBody(Exchange& exchange) const;
  void signIn(Exchange& exchange) const;

  const MailStore& store_;
  SignIn& signIn_;
  AccessTokens& tokens_;
};

} // namespace ondrel::demo
