// The global object of the application, kept true to what is shown. Others read it and may replace its goX
// functions, so the application itself calls those through the object, in the event that asks for them.

import {toast} from "/app/toast.js";

// What the store gives is no array, and can't be iterated.
class RecordCollection {
  #records;

  constructor(records) {
    this.#records = records;
  }

  length() {
    return this.#records.length;
  }
  getObjectAt(index) {
    return this.#records[index];
  }
  find(accepts) {
    return this.#records.find((record) => accepts(record)) ?? null;
  }
}

/** `actions` has go(url, state), composeUrl(), messageUrl(message), reveal(message). */
export function installFastMail(actions) {
  const open = (fields) => actions.go(actions.composeUrl(), fields ? {fields} : null);
  const appController = {
    message: null,
    draft: null,
    isConversationVisible: false,
    goMessage: (message) => actions.reveal(message),
    goCompose: (fields) => open(fields),
    goNewCompose: (fields) => open(fields),
    goCreateMaskedEmail: () => {
      const words = ["amber", "birch", "cedar", "dune", "ember", "fjord", "grove", "heron"];
      const pick = () => words[Math.floor(Math.random() * words.length)];
      const number = Math.floor(1000 + 9000 * Math.random());
      toast(`Masked address made: ${pick()}.${pick()}${number}@masked.example`);
    },
  };
  const records = [];
  const store = {
    add: (record) => records.push(record),
    getAll: (type) => new RecordCollection(records.filter((record) => record instanceof type)),
  };
  const classes = {};
  // Loads a part of the application without showing it.
  const modules = {};
  const loadApp = (name) => {
    modules[name] ??= import(`/app/${name}.js`).then(({installFiles}) => installFiles({classes, store}));
    return modules[name];
  };
  window.FastMail = {auth: {}, store, classes, router: {app: "mail", title: "", appController, loadApp}};
  return window.FastMail;
}

/** A message as the global object shows it. */
export function messageRecord(message, index) {
  return {
    id: () => message.id,
    get: (name) => message[name],
    threadId: message.threadId,
    index,  // of the thread's row in the mailbox; null when it has none there
  };
}
