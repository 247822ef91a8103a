import {Attachments} from "/app/attachments.js";
import {send} from "/app/data.js";
import {h, icon} from "/app/dom.js";
import {makeEditor} from "/app/editors.js";
import {askModal, overlay} from "/app/modal.js";
import {toast} from "/app/toast.js";

/**
 * The compose page. Everything it listens to is inside its element, which may be moved about in the
 * document, but for the end of the page: what was written keeps its user here.
 */
export class Compose {
  #controller;
  #isMinimal;

  /**
   * The controller has `draft`, leaveCompose() and restoreDraft(fields). In the minimal form there is no
   * other page to go back to: the page closes itself when it is done, by leaving for the mailbox.
   */
  constructor(controller, fields, isMinimal) {
    this.#controller = controller;
    this.#isMinimal = isMinimal;
    this.to = input("to", "To", fields.to);
    this.subject = input("subject", "Subject", fields.subject);
    this.editor = makeEditor(fields);
    this.element = h("section", {id: "compose", class: "v-Compose"});
    this.attachments = new Attachments(this.element);
    this.element.append(
        this.#bar(), h("div", {class: "v-Compose-fields"}, this.to.row, this.subject.row),
        this.attachments.element, this.editor.element);
    this.element.addEventListener("input", () => this.#tellDraft());
    this.element.addEventListener("keydown", (event) => {
      if (event.key === "Escape") {
        event.stopPropagation();
        this.#close();
      } else if (event.key === "Enter" && (event.ctrlKey || event.metaKey)) {
        this.#send();
      }
    });
    addEventListener("beforeunload", (event) => {
      if (this.element.isConnected && !this.element.inert && !this.#isEmpty()) {
        event.preventDefault();
      }
    });
    this.#tellDraft();
  }

  focus() {
    const first = [this.to.input, this.subject.input].find(({value}) => !value) ?? this.editor.element;
    first.focus();
  }

  #bar() {
    return h(
        "header", {class: "v-Bar v-Compose-bar"},
        h("button", {class: "v-Button is-icon", type: "button", title: "Close", onclick: () => this.#close()},
          icon("close")),
        h("h1", {}, "New message"), h("span", {class: "u-grow"}), this.attachments.button,
        h("button", {class: "v-Button s-discard", type: "button", onclick: () => this.#discard()}, "Discard"),
        h("button", {class: "v-Button is-primary s-send", type: "button", onclick: () => this.#send()},
          "Send"));
  }

  #recipients() {
    return this.to.input.value.split(",").map((address) => address.trim()).filter(Boolean);
  }

  #tellDraft() {
    this.#controller.draft = {to: this.#recipients(), subject: this.subject.input.value};
  }

  #fields() {
    return {to: this.to.input.value, subject: this.subject.input.value, content: this.editor.content()};
  }

  // In the user's own words, the quoted ones aside.
  #tellsOfMissingFile() {
    const written = h("div");
    written.innerHTML = this.editor.html();
    written.querySelectorAll("blockquote").forEach((quote) => quote.remove());
    return this.attachments.isEmpty && /\battached\b/i.test(written.textContent);
  }

  async #send() {
    const to = this.#recipients();
    if (to.length === 0) {
      toast("Who is this for? Add a recipient.");
      this.to.input.focus();
      return;
    }
    if (!this.subject.input.value.trim() && !confirm("Send this message without a subject?")) {
      return;
    }
    if (this.#tellsOfMissingFile() &&
        !await askModal(
            "Attachment missing?", "Your message tells of a file, and none is attached.", "Send anyway")) {
      return;
    }
    const focused = document.activeElement;
    this.element.inert = true;
    const dialog =
        overlay(h("div", {class: "v-Modal v-Compose-sendDialog", role: "dialog"}, h("p", {}, "Sending…")));
    try {
      const {blobIds} = this.attachments;
      await send({to, subject: this.subject.input.value, html: this.editor.html(), blobIds});
    } catch (error) {
      this.element.inert = false;
      focused?.focus();
      toast("The message could not be sent. Try again in a moment.");
      console.error("send failed:", String(error));
      return;
    } finally {
      dialog.remove();
    }
    toast("Message sent", {onExpire: () => this.#isMinimal && this.#controller.leaveCompose()});
    if (!this.#isMinimal) {
      this.#controller.leaveCompose();
    }
  }

  #discard() {
    const fields = this.#fields();
    if (this.#isMinimal) {
      this.element.inert = true;
      toast("Discarded draft", {
        action: "Undo",
        onAction: () => {
          this.element.inert = false;
          this.focus();
        },
        onExpire: () => this.#controller.leaveCompose(),
      });
    } else {
      toast("Discarded draft", {action: "Undo", onAction: () => this.#controller.restoreDraft(fields)});
      this.#controller.leaveCompose();
    }
  }

  #isEmpty() {
    return !this.to.input.value && !this.subject.input.value && this.editor.isUntouched &&
        this.attachments.isEmpty;
  }

  #close() {
    this.#isEmpty() ? this.#controller.leaveCompose() : this.#discard();
  }
}

function input(name, label, value) {
  const element =
      h("input", {type: "text", name, "aria-label": label, autocomplete: "off", value: value ?? ""});
  return {input: element, row: h("label", {class: "v-Compose-row"}, h("span", {}, label), element)};
}
