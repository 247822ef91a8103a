#include "platform/linux/webkit/WebKitPolicies.h"

#include "platform/linux/glib/Ref.h"
#include "platform/linux/text/SafeText.h"
#include "platform/linux/windows/KeyMapping.h"

namespace ondrel::platform::webkit {

namespace {

constexpr guint middleButton = 2;

NavigationType typeFrom(WebKitNavigationType type) {
  switch (type) {
  case WEBKIT_NAVIGATION_TYPE_LINK_CLICKED:
    return NavigationType::linkActivated;
  case WEBKIT_NAVIGATION_TYPE_FORM_SUBMITTED:
    return NavigationType::formSubmitted;
  case WEBKIT_NAVIGATION_TYPE_BACK_FORWARD:
    return NavigationType::backForward;
  case WEBKIT_NAVIGATION_TYPE_RELOAD:
    return NavigationType::reload;
  case WEBKIT_NAVIGATION_TYPE_FORM_RESUBMITTED:
    return NavigationType::formResubmitted;
  case WEBKIT_NAVIGATION_TYPE_OTHER:
    break;
  }
  return NavigationType::other;
}

void answer(WebKitPolicyDecision* decision, NavigationPolicy policy) {
  switch (policy) {
  case NavigationPolicy::allow:
    webkit_policy_decision_use(decision);
    return;
  case NavigationPolicy::cancel:
    webkit_policy_decision_ignore(decision);
    return;
  case NavigationPolicy::download:
    webkit_policy_decision_download(decision);
    return;
  }
}

} // namespace

NavigationAction navigationActionFrom(WebKitNavigationAction* action, std::uint64_t gesture) {
  NavigationAction result;
  result.gesture = gesture;
  result.type = typeFrom(webkit_navigation_action_get_navigation_type(action));
  result.modifiers = windows::modifiersFrom(
      static_cast<GdkModifierType>(webkit_navigation_action_get_modifiers(action)), false);
  if (webkit_navigation_action_get_mouse_button(action) == middleButton)
    result.modifiers.flags |= Modifiers::command;
  result.isUserGesture = webkit_navigation_action_is_user_gesture(action) != FALSE;
  const auto* url = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  if (url && *url)
    result.url = url;
  // The engine tells neither the frame nor whether the link has a `download` attribute; where it has one, an
  // allowed navigation becomes a download by itself.
  return result;
}

NavigationResponse navigationResponseFrom(WebKitResponsePolicyDecision* decision) {
  auto* response = webkit_response_policy_decision_get_response(decision);
  NavigationResponse result;
  result.url = webkit_uri_response_get_uri(response);
  if (const auto* type = webkit_uri_response_get_mime_type(response))
    result.mimeType = text::validUtf8(type);
  result.canShowMimeType = webkit_response_policy_decision_is_mime_type_supported(decision) != FALSE;
  result.isMainFrame = webkit_response_policy_decision_is_main_frame_main_resource(decision) != FALSE;
  if (auto* headers = webkit_uri_response_get_http_headers(response)) {
    result.isHttp = true;
    if (const auto* disposition = soup_message_headers_get_one(headers, "Content-Disposition"))
      result.contentDisposition = text::validUtf8(disposition);
  }
  return result;
}

void askForPolicy(WebViewDelegate& delegate, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                  std::uint64_t gesture, std::function<void()> refused) {
  const bool isResponse = type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE;
  PolicyReply reply(
      [decision = glib::share(decision), isResponse, refused = std::move(refused)](NavigationPolicy policy) {
        if (policy == NavigationPolicy::cancel && !isResponse)
          refused();
        answer(decision.get(), policy);
      },
      NavigationPolicy::cancel);
  if (isResponse) {
    delegate.decidePolicy(navigationResponseFrom(WEBKIT_RESPONSE_POLICY_DECISION(decision)),
                          std::move(reply));
    return;
  }
  auto* action =
      webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  delegate.decidePolicy(navigationActionFrom(action, gesture), std::move(reply));
}

} // namespace ondrel::platform::webkit
