import {fetchMailboxes} from "/app/data.js";
import {h, icon} from "/app/dom.js";
import {composeUrl, mailboxUrl, settingsUrl} from "/app/urls.js";

/** The mailboxes, and the ways to compose and to the settings. */
export class Sidebar {
  #current = "";
  #mailboxes = [];

  constructor(controller) {
    // The link itself is the click's target, never a picture inside it: others tell by its address what was
    // asked.
    this.compose =
        h("a", {class: "v-Button is-primary s-compose", href: composeUrl("Inbox"), title: "Compose (c)"},
          "Compose");
    this.compose.addEventListener("click", (event) => {
      if (event.button === 0 && !event.ctrlKey && !event.metaKey) {
        event.preventDefault();
        controller.goNewCompose();
      }
    });
    this.sources = h("ul", {class: "v-Sources-list"});
    this.element = h(
        "nav", {class: "v-Sources", "aria-label": "Mailboxes"},
        h("div", {class: "v-Sources-user", title: "robin@demo.example"}, h("span", {class: "v-Avatar"}, "R"),
          h("span", {class: "v-Sources-name"}, h("b", {}, "Robin Ashworth"), "robin@demo.example")),
        this.compose, this.sources,
        h("a", {class: "v-Source s-settings", href: settingsUrl("general"), title: "Settings"},
          icon("settings"), h("span", {class: "v-Source-name"}, "Settings")));
  }

  async refresh() {
    this.#mailboxes = await fetchMailboxes();
    this.#draw();
  }

  select(mailbox) {
    this.#current = mailbox;
    this.compose.href = composeUrl(mailbox || "Inbox");
    this.#draw();
  }

  #draw() {
    this.sources.replaceChildren(...this.#mailboxes.map(
        ({name, role, unread}) =>
            h("li", {},
              h("a", {
                class: `v-Source${name === this.#current ? " is-selected" : ""}`,
                href: mailboxUrl(name),
                title: name,
                "aria-current": name === this.#current ? "page" : null,
              },
                icon(role || "folder"), h("span", {class: "v-Source-name"}, name),
                unread > 0 ? h("span", {class: "v-Source-badge"}, String(unread)) : null))));
  }
}
