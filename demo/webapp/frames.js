// Bodies that are shown in a frame: sandboxed, or a page of the application's own origin. A frame with
// scripts tells its height by message.

import {h} from "/app/dom.js";

const sandboxes = {
  scriptFrame: "allow-scripts allow-popups allow-popups-to-escape-sandbox",
  staticFrame: "allow-popups allow-popups-to-escape-sandbox",
};

export function bodyFrame({id, kind, html}) {
  if (kind === "ownFrame") {
    return h("iframe", {class: "v-Message-frame", src: `/mail/body/${encodeURIComponent(id)}.html`});
  }
  const script = kind === "scriptFrame" ? "<script src=\"/app/frame.js\"></script>" : "";
  return h("iframe", {
    class: `v-Message-frame is-${kind}`,
    sandbox: sandboxes[kind],
    srcdoc: "<!doctype html><meta charset=\"utf-8\"><link rel=\"stylesheet\" href=\"/app/frame.css\">" +
        `<body><div class="v-Message-body">${html}</div>${script}`,
  });
}

addEventListener("message", (event) => {
  const height = event.data?.frameHeight;
  const frame = [...document.querySelectorAll("iframe.v-Message-frame")].find(
      (candidate) => candidate.contentWindow === event.source);
  if (frame && Number.isFinite(height)) {
    frame.style.height = `${Math.min(Math.max(height, 40), 20000)}px`;
  }
});
