#pragma once

#include "demo/MailStore.h"
#include "demo/Router.h"
#include "demo/SignIn.h"

namespace ondrel::demo {

// The pages of the web application and the files that they are made of, sign-in and downloads, and the host
// of what other people wrote: attachments at /blob/<blobId>/<name>, sources of messages at /source/<emailId>.
// As with the real service, whoever knows such a link may read it. All arguments outlive the router.
void addWebApp(Router& router, const MailStore& store, SignIn& signIn);

} // namespace ondrel::demo
