import {h} from "/app/dom.js";

/** A box over the page; give its remove() to whatever ends it. */
export function overlay(box) {
  const element = h("div", {class: "v-Overlay"}, box);
  document.body.append(element);
  return element;
}

/** A message that waits for its OK. */
export function alertModal(title, text) {
  const ok = h("button", {class: "v-Button is-primary", type: "button", onclick: () => shown.remove()}, "OK");
  const shown = overlay(
      h("div", {class: "v-Modal u-modal", role: "alertdialog", "aria-modal": "true", "aria-label": title},
        h("h1", {}, title), h("p", {class: "u-trim"}, text), ok));
  ok.focus();
}

/** A question over the page; the promise gives whether the user agreed. */
export function askModal(title, text, agreement) {
  return new Promise((resolve) => {
    const answer = (agreed) => {
      shown.remove();
      resolve(agreed);
    };
    const button = (label, className, agreed) =>
        h("button", {class: `v-Button ${className}`, type: "button", onclick: () => answer(agreed)}, label);
    const cancel = button("Cancel", "s-cancel", false);
    const shown = overlay(
        h("div", {class: "v-Modal u-modal", role: "dialog", "aria-modal": "true", "aria-label": title},
          h("h1", {}, title), h("p", {class: "u-trim"}, text), cancel,
          button(agreement, "is-primary s-agree", true)));
    cancel.focus();
  });
}
