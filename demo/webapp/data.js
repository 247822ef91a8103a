// Everything that the pages ask the service for.

async function ask(path, options) {
  const response = await fetch(path, options);
  if (response.status === 401) {
    location.reload();  // the same address then shows the sign-in page
    return new Promise(() => {});
  }
  if (!response.ok) {
    throw new Error(`${path}: ${response.status}`);
  }
  return response.json();
}

const jsonBody = (body) =>
    ({method: "POST", headers: {"Content-Type": "application/json"}, body: JSON.stringify(body)});
const post = (path, body) => ask(path, jsonBody(body));

export const fetchMailboxes = () => ask("/data/mailboxes");
export const fetchThread = (threadId, mailbox) =>
    ask(`/data/thread?id=${encodeURIComponent(threadId)}&mailbox=${encodeURIComponent(mailbox)}`);
export const fetchBody = async (emailId) => (await ask(`/data/body/${encodeURIComponent(emailId)}`)).html;
export const markRead = (threadId) => post("/data/read", {threadId});
export const moveThread = (threadId, role) => post("/data/move", {threadId, role});
/** Fails when the service doesn't take it, also where nobody is signed in: what was written must stay. */
export async function send(message) {
  const response = await fetch("/data/send", jsonBody(message));
  if (!response.ok) {
    throw new Error(`/data/send: ${response.status}`);
  }
}
/** The token for requests outside of the pages; undefined when nobody is signed in. */
export async function fetchToken() {
  const response = await fetch("/data/token");
  if (response.status === 401) {
    return undefined;
  }
  if (!response.ok) {
    throw new Error(`/data/token: ${response.status}`);
  }
  return (await response.json()).accessToken;
}
export const upload = (file) =>
    ask(`/data/upload?name=${encodeURIComponent(file.name)}`, {method: "POST", body: file});
export const share = (blobId) => post("/data/share", {blobId});

const pageSize = 100;

/** The rows of one mailbox, fetched page by page as they are looked at. */
export class MailboxRows {
  #pages = new Map();
  #changed;

  /** `changed()` is called when rows have arrived. */
  constructor(mailbox, changed) {
    this.mailbox = mailbox;
    this.total = 0;
    this.rows = [];
    this.#changed = changed;
  }

  /** Fetches what is missing of rows `from` to `to`. */
  want(from, to) {
    for (let page = Math.floor(from / pageSize); page <= Math.floor(Math.max(from, to - 1) / pageSize);
         ++page) {
      if (!this.#pages.has(page)) {
        this.#pages.set(page, this.#fetchPage(page));
      }
    }
  }

  /** Forgets what has been fetched, but goes on showing it until the new rows are there. */
  refresh() {
    this.#pages.clear();
  }

  indexOfThread(threadId) {
    return this.rows.findIndex((row) => row?.threadId === threadId);
  }

  async #fetchPage(page) {
    const position = page * pageSize;
    try {
      const answer = await ask(
          `/data/list?mailbox=${encodeURIComponent(this.mailbox)}&position=${position}&limit=${pageSize}`);
      this.total = answer.total;
      this.rows.length = answer.total;
      answer.rows.forEach((row, i) => {
        this.rows[position + i] = row;
      });
      this.#changed();
    } catch (error) {
      this.#pages.delete(page);  // the next look tries again
      console.warn("list page not fetched:", String(error));
    }
  }
}
