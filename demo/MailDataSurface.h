#pragma once

#include "demo/AccessTokens.h"
#include "demo/MailStore.h"
#include "demo/Router.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

// What the pages of the web application ask for as JSON, under /data/. Signed out, every answer is 401.
class MailDataSurface {
 public:
  MailDataSurface(MailStore& store, const SignIn& signIn, AccessTokens& tokens)
      : store_(store), signIn_(signIn), tokens_(tokens) {}
  void addTo(Router& router);

 private:
  void add(Router& router, const char* method, const char* path, void (MailDataSurface::*answer)(Exchange&));
  void mailboxes(Exchange& exchange);
  void list(Exchange& exchange);
  void thread(Exchange& exchange);
  void body(Exchange& exchange);
  void read(Exchange& exchange);
  void move(Exchange& exchange);
  void send(Exchange& exchange);
  void token(Exchange& exchange);

  MailStore& store_;
  const SignIn& signIn_;
  AccessTokens& tokens_;
};

} // namespace ondrel::demo
