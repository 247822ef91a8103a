#pragma once

#include "demo/http/Router.h"
#include "demo/http/SignIn.h"
#include "demo/mail/MailStore.h"

namespace ondrel::demo::web {

// What the pages of the web application ask for as JSON, under /data/, and the files of the user: an upload
// has the bytes as its body and a name in the query, its share gives the path of a link on the user-content
// host. Signed out, every answer is 401. All arguments outlive the router.
void addData(http::Router& router, mail::MailStore& store, http::SignIn& signIn);

} // namespace ondrel::demo::web
