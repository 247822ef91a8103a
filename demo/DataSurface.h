#pragma once

#include "demo/MailStore.h"
#include "demo/Router.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

// What the pages of the web application ask for as JSON, under /data/, and the files of the user: an upload
// has the bytes as its body and a name in the query, its share gives the path of a link on the user-content
// host. Signed out, every answer is 401. All arguments outlive the router.
void addData(Router& router, MailStore& store, SignIn& signIn);

} // namespace ondrel::demo
