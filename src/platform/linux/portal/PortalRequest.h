#pragma once

#include "platform/linux/desktop/MessageBus.h"

#include <expected>
#include <functional>
#include <string>

namespace ondrel::platform::portal {

inline constexpr const char* portalName = "org.freedesktop.portal.Desktop";
inline constexpr const char* portalPath = "/org/freedesktop/portal/desktop";

// What the portal gives in the end, of the type a{sv}.
using PortalResults = std::expected<glib::Owned<GVariant>, std::string>;

// Another one each time, of letters and digits: what the objects of requests and sessions end in.
std::string newToken();

// Asks the portal for something that the user may have to decide, and waits for that
// (org.freedesktop.portal.Request). `arguments` gets the token that belongs into the options as
// "handle_token", and gives the whole tuple. An error is a line for the log; it is "cancelled" when the user
// said no.
async::Task<PortalResults> requestFromPortal(glib::Ref<GDBusConnection> connection, std::string interface,
                                             std::string method,
                                             std::function<GVariant*(const std::string& token)> arguments);

// Reads the number of the interface's version; 0 where there is no such interface.
async::Task<unsigned> portalVersion(glib::Ref<GDBusConnection> connection, std::string interface);

} // namespace ondrel::platform::portal
