import {Compose} from "/app/compose.js";
import {installFastMail, messageRecord} from "/app/controller.js";
import {Conversation} from "/app/conversation.js";
import {fetchThread, markRead, moveThread} from "/app/data.js";
import {h} from "/app/dom.js";
import {installShortcuts} from "/app/keyboard.js";
import {MessageList} from "/app/list.js";
import {Router} from "/app/router.js";
import {paneTitle, settingsPage} from "/app/settings.js";
import {Sidebar} from "/app/sidebar.js";
import {toast} from "/app/toast.js";
import {keepToken} from "/app/token.js";
import {composeUrl, mailboxUrl, messageUrl, parseUrl} from "/app/urls.js";

const router = new Router((state) => show(state));
let shown = {mailbox: "Inbox"};
let thread = null;   // as fetched, while a conversation is open
let generation = 0;  // of show(), so that a late answer is thrown away

const FastMail = installFastMail({
  go: (url, state) => router.go(url, state),
  composeUrl: () => composeUrl(shown.mailbox),
  reveal: (message) => {
    list.reveal(message.threadId, message.index);
    if (FastMail.router.appController.message?.id() !== message.id()) {
      router.go(messageUrl(shown.mailbox, message.threadId, message.id()));
    }
  },
});
const {appController} = FastMail.router;

const list = new MessageList();
const sidebar = new Sidebar(appController);
const conversation = new Conversation({
  goNewCompose: (fields) => appController.goNewCompose(fields),
  close: () => router.go(mailboxUrl(shown.mailbox)),
  move: async (threadId, role) => {
    await moveThread(threadId, role);
    router.go(mailboxUrl(shown.mailbox));
    toast(role === "trash" ? "Conversation deleted" : "Conversation archived");
    refresh();
  },
});
const composeController = {
  set draft(value) {
    appController.draft = value;
  },
  leaveCompose: () => {
    // A page that was stripped to the editor has lost its other parts, and needs a fresh document.
    app.isConnected ? router.go(mailboxUrl(shown.mailbox)) : location.assign(mailboxUrl(shown.mailbox));
  },
  restoreDraft: (fields) => router.go(composeUrl(shown.mailbox), {fields}),
};

const nothing = h("p", {class: "v-Empty"}, "No conversation is open.");
const content = h("main", {class: "v-Content"}, nothing);
const app = h("div", {id: "app"}, sidebar.element, list.element, content);
document.body.append(app);

async function show(state) {
  const mine = ++generation;
  shown = parseUrl(location);
  app.dataset.view = shown.view;
  app.classList.toggle("is-minimal", Boolean(shown.isMinimal));
  FastMail.router.app = shown.app;
  appController.draft = null;
  sidebar.select(shown.app === "mail" ? shown.mailbox : "");
  if (shown.app === "mail") {
    list.show(shown.mailbox);
  }
  if (shown.view === "message") {
    await showMessage(mine);
    return;
  }
  leaveMessage();
  if (shown.view === "settings") {
    setTitle(`${paneTitle(shown.pane)} – Settings`);
    content.replaceChildren(settingsPage(shown.pane, {close: () => router.go(mailboxUrl("Inbox"))}));
  } else if (shown.view === "compose") {
    setTitle("New message");
    const compose = new Compose(composeController, state?.fields ?? shown.fields, shown.isMinimal);
    content.replaceChildren(compose.element);
    compose.focus();
  } else {
    setTitle(shown.mailbox);
    content.replaceChildren(nothing);
  }
}

async function showMessage(mine) {
  const {threadId, emailId, mailbox} = shown;
  list.focusThread(threadId);
  if (thread?.threadId !== threadId) {
    leaveMessage();
    list.focusThread(threadId);
    let fetched;
    try {
      fetched = await fetchThread(threadId, mailbox);
    } catch (error) {
      if (mine === generation) {
        setTitle(mailbox);
        content.replaceChildren(h("p", {class: "v-Empty"}, "This conversation can't be shown."));
        console.warn("conversation not fetched:", String(error));
      }
      return;
    }
    if (mine !== generation) {
      return;
    }
    thread = fetched;
  }
  content.replaceChildren(conversation.element);
  conversation.show(thread, emailId, mailbox);
  const message = thread.messages.find(({id}) => id === emailId) ?? thread.messages.at(-1);
  appController.message = messageRecord(message, thread.index);
  appController.isConversationVisible = true;
  setTitle(message.subject || "(No subject)");
  if (thread.messages.some(({isUnread}) => isUnread)) {
    list.markRead(threadId);
    await markRead(threadId);
    await sidebar.refresh();
  }
}

function leaveMessage() {
  thread = null;
  appController.message = null;
  appController.isConversationVisible = false;
  conversation.clear();
}

function setTitle(title) {
  FastMail.router.title = title;
  document.title = title;
}

function refresh() {
  list.refresh();
  sidebar.refresh().catch((error) => console.warn("mailboxes not fetched:", String(error)));
}

function step(by) {
  const next = list.neighbour(by);
  if (!next || shown.app !== "mail") {
    return;
  }
  list.reveal(next.row.threadId, next.index);
  if (shown.view === "message") {
    open(next.row);
  }
}

const open = (row) => row && router.go(messageUrl(shown.mailbox, row.threadId, row.emailId));

function reply(toAll) {
  const message = conversation.focusedMessage();
  if (shown.view === "message" && message) {
    conversation.reply(message, toAll);
  }
}

installShortcuts({
  c: () => appController.goCompose(),
  j: () => step(1),
  k: () => step(-1),
  o: () => shown.view === "list" && open(list.focusedRow()),
  enter: () => shown.view === "list" && open(list.focusedRow()),
  r: () => reply(false),
  a: () => reply(true),
  u: () => shown.view !== "list" && router.go(mailboxUrl(shown.mailbox)),
  escape: () => shown.view !== "list" && router.go(mailboxUrl(shown.mailbox)),
});

addEventListener("focus", refresh);
refresh();
keepToken(FastMail.auth);
router.start();
