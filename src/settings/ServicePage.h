#pragma once

#include <string_view>

// Expressions that the program evaluates in a page of the service: what it knows of the application's objects
// there. What the page scripts know is in scripts/shared/application.js.
namespace ondrel::settings::page {

inline constexpr std::string_view accessToken = "globalThis.FastMail?.auth?.accessToken ?? null";
// The user isn't signed in, by what sign-in pages have, whoever made them.
inline constexpr std::string_view asksToSignIn =
    "!globalThis.FastMail?.auth?.accessToken && (/\\/(log-?in|sign-?in)\\b/i.test(location.pathname) ||"
    " document.querySelector('input[type=password], input[autocomplete~=username]') !== null)";
inline constexpr std::string_view hasBooted =
    "!!(window.FastMail && FastMail.router && FastMail.router.appController)";
inline constexpr std::string_view showsConversation =
    "globalThis.FastMail?.router?.appController?.isConversationVisible ?? false";
inline constexpr std::string_view selectedEmailId = "FastMail.router.appController.message?.id()";
inline constexpr std::string_view createMaskedEmail = "FastMail.router.appController.goCreateMaskedEmail();";

} // namespace ondrel::settings::page
