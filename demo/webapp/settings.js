import {h} from "/app/dom.js";
import {preference, setPreference} from "/app/preferences.js";
import {toast} from "/app/toast.js";
import {settingsUrl} from "/app/urls.js";

const panes = {
  general: {title: "General", draw: general},
  notifications: {title: "Notifications", draw: notifications},
};

export const paneTitle = (pane) => (panes[pane] ?? panes.general).title;

/** The settings page with one of its panes. */
export function settingsPage(pane, {close}) {
  const shown = panes[pane] ?? panes.general;
  return h(
      "section", {class: "v-Settings"},
      h("header", {class: "v-Bar"}, h("h1", {}, "Settings"), h("span", {class: "u-grow"}),
        h("button",
          {class: "v-Button s-settings-popup", type: "button", onclick: () => window.open(settingsUrl(pane))},
          "Open in a new window"),
        h("button", {class: "v-Button s-back", type: "button", onclick: close}, "Done")),
      h("nav", {class: "v-Settings-tabs", "aria-label": "Panes"},
        Object.entries(panes).map(
            ([name, {title}]) =>
                h("a", {
                  href: settingsUrl(name),
                  class: panes[name] === shown ? "is-selected" : "",
                },
                  title))),
      h("div", {class: "v-Settings-scroller"}, shown.draw()));
}

function setting(title, text, ...controls) {
  return h(
      "div", {class: "v-Setting"}, h("div", {}, h("b", {}, title), h("p", {}, text)),
      h("div", {class: "v-Setting-controls"}, controls));
}

function choice(name, labels) {
  return h(
      "select", {id: name, "aria-label": name, onchange: (event) => setPreference(name, event.target.value)},
      Object.entries(labels).map(
          ([value, label]) => h("option", {value, selected: value === preference(name)}, label)));
}

function general() {
  const chosen = h("span", {class: "v-Setting-value", id: "chosen-files"});
  return h(
      "div", {},
      setting(
          "Profile picture", "Shown beside the messages that you send. Several can be chosen to pick from.",
          h("input", {
            type: "file",
            id: "profile-picture",
            multiple: true,
            onchange: (event) => {
              chosen.textContent = [...event.target.files].map((file) => file.name).join(", ");
            },
          }),
          chosen),
      setting(
          "Messages", "Whole conversations, or one message at a time.",
          choice("messageView", {conversation: "Conversations", single: "Single messages"})),
      setting(
          "Compose", "How new messages are written.",
          choice("composeFormat", {rich: "Rich text", plain: "Plain text"})),
      setting("Signature", "Stands below what you write.", h("input", {
                type: "text",
                id: "signature",
                "aria-label": "Signature",
                value: preference("signature"),
                onchange: (event) => setPreference("signature", event.target.value),
              })),
      setting(
          "Storage", "How much of your space is in use.",
          h("button", {
            class: "v-Button",
            id: "show-alert",
            type: "button",
            onclick: () => alert("You use 1.2 of 30 GB.")
          },
            "Show")),
      setting(
          "Layout", "Puts the columns back to their first widths.",
          h("button", {
            class: "v-Button",
            id: "show-confirm",
            type: "button",
            onclick: () => toast(confirm("Reset the layout?") ? "Layout reset" : "Layout kept"),
          },
            "Reset…")),
      setting(
          "Export", "Take your own data with you.",
          h("a", {
            class: "v-Button",
            id: "download-attribute",
            href: "/download/settings.json",
            download: "settings.json"
          },
            "Settings"),
          h("a", {class: "v-Button", id: "download-disposition", href: "/download/contacts.vcf"}, "Contacts"),
          h("a", {class: "v-Button", id: "download-large", href: "/download/archive.mbox"}, "All mail")),
      setting(
          "Print view", "The minutes of the garden society on one long page.",
          h("a", {class: "v-Button", href: "/mail/long"}, "Open")),
      setting(
          "Sign out", "You will be asked to sign in again.",
          h("a", {class: "v-Button s-sign-out", href: "/sign-out"}, "Sign out")));
}

function notifications() {
  const state = typeof Notification === "undefined" ? "not available" : Notification.permission;
  return h(
      "div", {id: "s-settings-notifications"},
      setting(
          "New mail", "Show a notification when a message arrives in the inbox.",
          h("label", {}, h("input", {type: "checkbox", id: "notify-new-mail"}), " Show")),
      setting(
          "Permission", "What this browser says about notifications.",
          h("span", {class: "v-Setting-value", id: "notification-permission"}, state)));
}
