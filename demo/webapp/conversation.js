import {fetchBody} from "/app/data.js";
import {fullDate, shortDate} from "/app/dates.js";
import {h, icon} from "/app/dom.js";
import {bodyFrame} from "/app/frames.js";
import {preference} from "/app/preferences.js";
import {blobUrl, messageFileUrl, messageUrl, sourceUrl} from "/app/urls.js";

const manyMessages = 8;  // from here on the middle ones wait behind a button

/** One conversation: cards of messages, the earlier ones collapsed to their headers. */
export class Conversation {
  #thread = null;
  #mailbox = "";
  #shown = "";  // what is drawn: mailbox, and the message if it stands alone
  #controller;

  /** The controller has goNewCompose(fields), close() and move(threadId, role). */
  constructor(controller) {
    this.#controller = controller;
    this.heading = h("h1", {class: "v-Thread-subject"});
    this.cards = h("div", {class: "v-Thread-cards"});
    this.scroller = h("div", {class: "v-Thread-scroller", tabindex: "-1"}, this.heading, this.cards);
    this.bar =
        h("header", {class: "v-Bar"},
          button("back", "Back to the list (u)", "s-back", () => controller.close()),
          h("span", {class: "u-grow"}),
          button("archive", "Archive", "s-archive", () => controller.move(this.#thread.threadId, "archive")),
          button("trash", "Delete", "s-delete", () => controller.move(this.#thread.threadId, "trash")),
          button("print", "Print", "s-print", () => window.print()),
          button(
              "window", "Open in a new window", "s-new-window",
              () => window.open(location.pathname + location.search)));
    this.element = h("article", {class: "v-Thread"}, this.bar, this.scroller);
  }

  /** Shows the thread with one message in the focus. The same thread isn't drawn again. */
  show(thread, emailId, mailbox) {
    const message = thread.messages.find(({id}) => id === emailId) ?? thread.messages.at(-1);
    const isAlone = preference("messageView") === "single";
    const shown = `${mailbox}/${isAlone ? message.id : ""}`;
    const isSame = this.#thread === thread && this.#shown === shown;
    this.#thread = thread;
    this.#mailbox = mailbox;
    this.#shown = shown;
    if (!isSame) {
      this.heading.textContent = thread.messages[0].subject || "(No subject)";
      this.#draw(isAlone ? [message] : thread.messages, emailId);
    }
    const card = this.#cardOf(emailId) ?? this.cards.lastElementChild;
    if (!isFolded(message)) {
      card.hidden = false;
      this.#expand(card);
    }
    if (thread.messages.length > 1 && !isAlone) {
      for (const other of this.cards.querySelectorAll(".v-MessageCard")) {
        other.classList.toggle("is-focused", other === card);
      }
    }
    this.scroller.scrollTop = 0;
    const isTall = card.offsetHeight > this.scroller.clientHeight - 20;
    card.scrollIntoView({block: isTall && card !== this.cards.firstElementChild ? "start" : "nearest"});
  }

  clear() {
    this.#thread = null;
    this.heading.textContent = "";
    this.cards.replaceChildren();
  }

  focusedMessage() {
    // A message that stands alone is in the focus without a sign of it.
    const card =
        this.cards.querySelector(".v-MessageCard.is-focused") ?? this.cards.querySelector(".v-MessageCard");
    const id = card?.dataset.emailId;
    return this.#thread?.messages.find((message) => message.id === id) ?? this.#thread?.messages.at(-1) ??
        null;
  }

  reply(message, toAll) {
    const others = toAll ? message.to.map((address) => address.email) : [];
    const to = [message.from.email, ...others].filter((email) => email !== "robin@demo.example");
    this.#controller.goNewCompose({
      to: [...new Set(to)].join(", ") || message.to.map((address) => address.email).join(", "),
      subject: /^re:/i.test(message.subject) ? message.subject : `Re: ${message.subject}`,
      quote: {html: message.html, intro: `On ${fullDate(message.receivedAt)}, ${message.from.name} wrote:`},
    });
  }

  #draw(messages, focusedId) {
    const cards = messages.map((message) => this.#makeCard(message));
    if (messages.length >= manyMessages) {
      const stays = messages.some(isFolded) ? null : focusedId;
      const hidden = cards.slice(1, -2).filter((card) => card.dataset.emailId !== stays);
      hidden.forEach((card) => {
        card.hidden = true;
      });
      const more =
          h("button", {class: "v-MessageCard-showMore", type: "button"}, `${hidden.length} more messages`);
      more.addEventListener("click", () => {
        hidden.forEach((card) => {
          card.hidden = false;
        });
        more.remove();
      });
      cards.splice(1, 0, more);
    }
    this.cards.replaceChildren(...cards);
    messages.filter(isLate).forEach(({id}) => this.#expand(this.#cardOf(id)));
    if (!isFolded(messages.at(-1))) {
      this.#expand(cards.at(-1));
    }
  }

  #makeCard(message) {
    const header =
        h("header", {class: "v-MessageCard-header"},
          h("span", {class: "v-Avatar"}, message.from.name.slice(0, 1) || "?"),
          h("span", {class: "v-MessageCard-people"},
            h("b", {class: "v-MessageCard-from"}, message.from.name || message.from.email),
            h("span", {class: "v-MessageCard-to"},
              `to ${message.to.map((address) => address.name || address.email).join(", ")}`),
            h("span", {class: "v-MessageCard-preview"}, message.preview)),
          h("time", {datetime: message.receivedAt, title: fullDate(message.receivedAt)},
            shortDate(message.receivedAt)),
          h("span", {class: "v-MessageCard-actions"},
            button("reply", "Reply (r)", "s-reply", () => this.reply(message, false)),
            button("reply-all", "Reply to all (a)", "s-reply-all", () => this.reply(message, true)),
            button(
                "source", "Show message source", "s-show-source",
                () => window.open(sourceUrl(location, message.id))),
            button(
                "download", "Download message", "s-download-message",
                () => window.open(messageFileUrl(location, message.id))),
            button(
                "window", "Open message in a new window", "s-message-window",
                () => window.open(messageUrl(this.#mailbox, message.threadId, message.id)))));
    const card = h("section", {class: "v-MessageCard is-collapsed", "data-email-id": message.id}, header);
    header.addEventListener("click", (event) => {
      if (!event.target.closest("button")) {
        card.classList.contains("is-collapsed") ? this.#expand(card) : this.#collapse(card);
      }
    });
    return card;
  }

  #cardOf(emailId) {
    return [...this.cards.querySelectorAll(".v-MessageCard")].find(
        (card) => card.dataset.emailId === emailId);
  }

  #collapse(card) {
    card.classList.add("is-collapsed");
    card.querySelector(".v-MessageCard-content")?.remove();
  }

  #expand(card) {
    if (!card.classList.contains("is-collapsed")) {
      return;
    }
    const message = this.#thread.messages.find(({id}) => id === card.dataset.emailId);
    card.classList.remove("is-collapsed");
    card.append(h("div", {class: "v-MessageCard-content"}, this.#body(message), attachments(message)));
  }

  #body(message) {
    if (message.kind !== "flow" && !isLate(message) && !isFolded(message)) {
      return bodyFrame(message);
    }
    const body = h("div", {class: "v-Message-body"});
    if (isLate(message)) {
      fillLater(body, message);
    } else {
      body.innerHTML = message.html;
    }
    body.addEventListener("click", (event) => {
      const link = event.target.closest("a[href^='mailto:']");
      if (link && !link.target && event.button === 0) {
        event.preventDefault();
        const url = new URL(link.href);
        this.#controller.goNewCompose({
          to: decodeURIComponent(url.pathname),
          subject: url.searchParams.get("subject") ?? "",
        });
      }
    });
    return body;
  }
}

// Nothing but a click opens such a message.
function isFolded(message) {
  return message.kind === "folded";
}

// A conversation of such messages is shown whole.
function isLate(message) {
  return message.kind === "late";
}

async function fillLater(body, message) {
  body.textContent = "Loading…";
  try {
    message.html ||= await fetchBody(message.id);
    body.innerHTML = message.html;
  } catch {
    body.textContent = "This message could not be loaded.";
  }
}

function button(name, title, className, action) {
  return h(
      "button", {class: `v-Button is-icon ${className}`, type: "button", title, onclick: action}, icon(name));
}

function attachments(message) {
  if (message.attachments.length === 0) {
    return null;
  }
  return h(
      "ul", {class: "v-MessageCard-files", "aria-label": "Attachments"},
      message.attachments.map(
          (file) =>
              h("li", {},
                h("a", {class: "v-FileLink", href: blobUrl(location, file), title: file.name},
                  icon("attachment"), h("span", {class: "v-FileLink-name"}, file.name),
                  h("span", {class: "v-FileLink-size"}, sizeText(file.size))))));
}

function sizeText(bytes) {
  return bytes < 1000 ? `${bytes} B` : `${(bytes / 1000).toFixed(1)} kB`;
}
