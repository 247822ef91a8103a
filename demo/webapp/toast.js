import {h} from "/app/dom.js";

const lifetime = 6000;  // milliseconds

let current = null;

/** A line at the foot of the window, with an optional action; `onExpire` runs if the action isn't taken. */
export function toast(text, {action, onAction, onExpire} = {}) {
  current?.remove();
  const element =
      h("div", {class: "v-Notification", role: "status"}, h("span", {class: "v-Notification-message"}, text));
  const timer = setTimeout(() => {
    element.remove();
    onExpire?.();
  }, lifetime);
  if (action) {
    element.append(
        h("button", {
          class: "v-Button v-Notification-action",
          type: "button",
          onclick: () => {
            clearTimeout(timer);
            element.remove();
            onAction();
          },
        },
          action));
  }
  current = element;
  document.body.append(element);
}
