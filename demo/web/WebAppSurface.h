#pragma once

#include "demo/http/Router.h"
#include "demo/http/SignIn.h"
#include "demo/mail/MailStore.h"

namespace ondrel::demo::web {

// The pages of the web application and the files that they are made of, sign-in and downloads, and the host
// of what other people wrote: attachments at /blob/<blobId>/<name>, sources of messages at /source/<emailId>.
// As with the real service, whoever knows such a link may read it. The project's feed is here too: the
// announcement's JSON, which is empty where there is none. All arguments outlive the router.
void addWebApp(http::Router& router, const mail::MailStore& store, http::SignIn& signIn,
               const std::string& announcement);

} // namespace ondrel::demo::web
