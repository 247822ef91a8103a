import {MailboxRows} from "/app/data.js";
import {shortDate} from "/app/dates.js";
import {h, icon} from "/app/dom.js";
import {messageUrl} from "/app/urls.js";

const rowHeight = 78;
const margin = 6;  // rows kept outside the visible part, on each side

/** The message list. Only the rows in and near the visible part are in the document. */
export class MessageList {
  #rows = null;
  #items = new Map();  // row index -> li
  #focused = null;     // thread id
  #drawn = null;

  constructor() {
    this.list = h("ul", {class: "v-Mailbox-list"});
    this.scroller = h("div", {class: "v-Mailbox-scroller", tabindex: "-1"}, this.list);
    this.title = h("h1", {class: "v-Mailbox-title"});
    this.element =
        h("section", {class: "v-Mailbox", "aria-label": "Messages"},
          h("header", {class: "v-Bar"}, this.title), this.scroller);
    this.scroller.addEventListener("scroll", () => this.#draw(), {passive: true});
    new ResizeObserver(() => this.#draw()).observe(this.scroller);
  }

  show(mailbox) {
    if (this.#rows?.mailbox === mailbox) {
      return;
    }
    this.title.textContent = mailbox;
    this.#clear();
    this.list.style.height = "0";
    this.scroller.scrollTop = 0;
    this.#rows = new MailboxRows(mailbox, () => {
      this.#clear();
      this.#draw();
    });
    this.#draw();
  }

  refresh() {
    this.#rows?.refresh();
    this.#draw();
  }

  markRead(threadId) {
    const row = this.#rows?.rows[this.#rows.indexOfThread(threadId)];
    if (row?.isUnread) {
      row.isUnread = false;
      this.#items.get(this.#rows.indexOfThread(threadId))?.classList.remove("is-unread");
    }
  }

  /** The row that has the class is-focused; null for none. */
  focusThread(threadId) {
    this.#focused = threadId;
    for (const [index, item] of this.#items) {
      item.classList.toggle("is-focused", this.#rows.rows[index]?.threadId === threadId && threadId !== null);
    }
  }

  /** Brings the row into view, near the middle if it wasn't visible. */
  reveal(threadId, index) {
    this.focusThread(threadId);
    if (index === null || index === undefined || index < 0) {
      return;
    }
    const top = index * rowHeight;
    const view = this.#viewHeight();
    if (top < this.scroller.scrollTop || top + rowHeight > this.scroller.scrollTop + view) {
      this.scroller.scrollTop = Math.max(0, top - (view - rowHeight) / 2);
    }
    this.#draw();
  }

  /** The loaded row that is `step` places from the focused one, with its index; none at the ends. */
  neighbour(step) {
    const rows = this.#rows?.rows ?? [];
    const index =
        this.#focused === null ? (step > 0 ? 0 : -1) : this.#rows.indexOfThread(this.#focused) + step;
    return rows[index] ? {row: rows[index], index} : null;
  }

  focusedRow() {
    return this.#rows?.rows[this.#rows.indexOfThread(this.#focused)] ?? null;
  }

  // Hidden in a narrow window the list has no height of its own, and still keeps rows for the message shown.
  #viewHeight() {
    return this.scroller.clientHeight || innerHeight;
  }

  #clear() {
    this.#items.clear();
    this.#drawn = null;
    this.list.replaceChildren();
  }

  #draw() {
    if (!this.#rows) {
      return;
    }
    const {total} = this.#rows;
    const first = Math.max(0, Math.floor(this.scroller.scrollTop / rowHeight) - margin);
    const end = Math.max(
        1, Math.min(total, Math.ceil((this.scroller.scrollTop + this.#viewHeight()) / rowHeight) + margin));
    this.#rows.want(first, end);
    this.list.style.height = `${total * rowHeight}px`;
    if (total === 0 || this.#drawn === `${first}-${end}`) {
      return;
    }
    this.#drawn = `${first}-${end}`;
    for (const [index, item] of this.#items) {
      if (index < first || index >= end) {
        item.remove();
        this.#items.delete(index);
      }
    }
    for (let index = first; index < end; ++index) {
      if (!this.#items.has(index)) {
        const item = this.#makeItem(index);
        this.#items.set(index, item);
        this.list.append(item);
      }
    }
  }

  #makeItem(index) {
    const row = this.#rows.rows[index];
    const place = `top:${index * rowHeight}px`;
    if (!row) {
      return h("li", {class: "v-MailboxItem is-loading", style: place}, h("span"), h("span"));
    }
    const classes = ["v-MailboxItem"];
    if (row.isUnread) {
      classes.push("is-unread");
    }
    if (row.threadId === this.#focused) {
      classes.push("is-focused");
    }
    return h(
        "li", {class: classes.join(" "), style: place},
        h("a", {class: "v-MailboxItem-link", href: messageUrl(this.#rows.mailbox, row.threadId, row.emailId)},
          h("span", {class: "v-MailboxItem-top"},
            h("span", {class: "v-MailboxItem-name"}, row.from.name || row.from.email),
            row.messageCount > 1 ? h("span", {class: "v-MailboxItem-count"}, String(row.messageCount)) : null,
            row.hasAttachment ? icon("attachment") : null,
            h("time", {datetime: row.receivedAt}, shortDate(row.receivedAt))),
          h("span", {class: "v-MailboxItem-subject"}, row.subject || "(No subject)"),
          h("span", {class: "v-MailboxItem-preview"}, row.preview)));
  }
}
