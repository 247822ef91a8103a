#include "webext/PageBackground.h"

#include "platform/linux/glib/Ref.h"
#include "webext/ScriptText.h"

namespace ondrel::webext {

namespace {

// A function that takes `wantsWhite`. Pages that build themselves have nothing to show at first, and no
// background yet: they are looked at again with what comes, some times and not more.
constexpr const char* watcher = R"js((wantsWhite) => {
  'use strict';
  const PAUSE_MS = 200;
  const LAST_LOOK = 50;

  const channels = (color) => (color.match(/[\d.]+/g) ?? []).map(Number);
  const isPainted = (element) => {
    const {backgroundColor, backgroundImage} = getComputedStyle(element);
    return backgroundImage !== 'none' || (channels(backgroundColor)[3] ?? 1) > 0;
  };
  const isDark = (color) => {
    const [red, green, blue] = channels(color);
    return 0.3 * red + 0.6 * green + 0.1 * blue < 128;
  };

  // True when there is nothing more to find out.
  const look = () => {
    const {documentElement: root, body} = document;
    if (!root || !body) {
      return false;
    }
    if (isPainted(root) || isPainted(body)) {
      return true;
    }
    if (body.innerText.trim() === '' && document.images.length === 0) {
      return false;
    }
    if (isDark(getComputedStyle(body).color)) {
      wantsWhite();
    }
    return true;
  };

  // Shown again as it was left: the program has forgotten what it knew of it.
  window.addEventListener('pageshow', ({persisted}) => persisted && look());
  if (look()) {
    return;
  }
  let looks = 0;
  let isWaiting = false;
  const observer = new MutationObserver(() => {
    if (isWaiting) {
      return;
    }
    isWaiting = true;
    setTimeout(() => {
      isWaiting = false;
      looks += 1;
      if (looks > LAST_LOOK || look()) {
        observer.disconnect();
      }
    }, PAUSE_MS);
  });
  observer.observe(document, {childList: true, subtree: true});
})js";

WebKitScriptWorld* ownWorld() {
  static WebKitScriptWorld* const world = webkit_script_world_new();
  return world;
}

} // namespace

void watchBackground(WebKitFrame* frame, std::function<void()> wantsWhite) {
  const auto context = glib::adopt(webkit_frame_get_js_context_for_script_world(frame, ownWorld()));
  if (!context)
    return;
  const CaughtExceptions caught(context.get());
  const auto watch = glib::adopt(jsc_context_evaluate(context.get(), watcher, -1));
  if (!watch || !jsc_value_is_function(watch.get()))
    return;
  using Callback = std::function<void()>;
  const auto function = glib::adopt(jsc_value_new_function(
      context.get(), nullptr, G_CALLBACK(+[](Callback* callback) { (*callback)(); }),
      new Callback(std::move(wantsWhite)), [](gpointer callback) { delete static_cast<Callback*>(callback); },
      G_TYPE_NONE, 0));
  const auto result =
      glib::adopt(jsc_value_function_call(watch.get(), JSC_TYPE_VALUE, function.get(), G_TYPE_NONE));
}

} // namespace ondrel::webext
