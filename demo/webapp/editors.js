// The two editors of a message. Each has its element, html() as it will be sent, content() to make another of
// its kind from, and isUntouched.

import {h} from "/app/dom.js";
import {preference} from "/app/preferences.js";
import {htmlOfText, quoted, textOfHtml} from "/app/quote.js";

/**
 * `fields` has `content` of an earlier editor, or any of `body` (text) and `quote` ({html, intro}). The
 * signature stands below all.
 */
export function makeEditor(fields) {
  const format = fields.content?.format ?? preference("composeFormat");
  return format === "plain" ? new PlainEditor(fields) : new RichEditor(fields);
}

class RichEditor {
  #initial;

  constructor({content, body, quote}) {
    this.element = h("div", {
      class: "v-RichText-input",
      contenteditable: "true",
      role: "textbox",
      "aria-multiline": "true",
      "aria-label": "Message",
    });
    if (content) {
      this.element.innerHTML = content.html;
    } else {
      this.element.append(...paragraphs(body, quote), ...signatureBlock());
    }
    this.#initial = this.element.innerHTML;
  }

  get isUntouched() {
    return this.element.innerHTML === this.#initial;
  }
  html() {
    return this.element.innerHTML;
  }
  content() {
    return {format: "rich", html: this.element.innerHTML};
  }
}

class PlainEditor {
  #initial;

  constructor({content, body, quote}) {
    this.element = h("textarea", {class: "v-TextInput-input", "aria-label": "Message"});
    this.element.value = content ? content.text : plainText(body, quote);
    this.element.addEventListener("focus", () => this.element.setSelectionRange(0, 0), {once: true});
    this.#initial = this.element.value;
  }

  get isUntouched() {
    return this.element.value === this.#initial;
  }
  html() {
    return htmlOfText(this.element.value);
  }
  content() {
    return {format: "plain", text: this.element.value};
  }
}

function paragraphs(body, quote) {
  const lines = (body ?? "").split("\n").map((line) => h("p", {}, line || h("br")));
  if (!quote) {
    return lines;
  }
  const block = h("blockquote", {type: "cite"});
  block.innerHTML = quote.html;
  return [...lines, h("p", {}, quote.intro), block];
}

function signatureBlock() {
  const signature = preference("signature");
  return signature ? [h("div", {class: "v-Signature"}, h("p", {}, "-- "), h("p", {}, signature))] : [];
}

function plainText(body, quote) {
  const signature = preference("signature");
  const parts = [body ?? ""];
  if (quote) {
    parts.push(`${quote.intro}\n${quoted(textOfHtml(quote.html))}`);
  }
  if (signature) {
    parts.push(`-- \n${signature}`);
  }
  return parts.join("\n\n");
}
