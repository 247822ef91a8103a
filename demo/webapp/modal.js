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
