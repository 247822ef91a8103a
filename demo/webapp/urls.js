// The addresses of the application, in both directions. No state and no document here.

const user = "u=demo";

export const mailboxUrl = (mailbox) => `/mail/${encodeURIComponent(mailbox)}/?${user}`;
export const messageUrl = (mailbox, threadId, emailId) =>
    `/mail/${encodeURIComponent(mailbox)}/${threadId}.${emailId}?${user}`;
export const composeUrl = (mailbox) => `/mail/${encodeURIComponent(mailbox)}/compose?${user}`;
export const settingsUrl = (pane) => `/settings/${pane}?${user}`;

export const contentUrl = (location, path) =>
    `${location.protocol}//usercontent.localhost:${location.port}${path}`;
export const blobUrl = (location, {blobId, name}) =>
    contentUrl(location, `/blob/${blobId}/${encodeURIComponent(name)}?${user}&download=1`);
export const sourceUrl = (location, emailId) => contentUrl(location, `/source/${emailId}?${user}`);
export const messageFileUrl = (location, emailId) => `${sourceUrl(location, emailId)}&download=1`;

/** What an address shows. Never fails: what it can't read is the inbox. */
export function parseUrl(location) {
  const [app, ...rest] = location.pathname.split("/").filter(Boolean).map(decode);
  if (app === "settings") {
    return {app, view: "settings", pane: rest[0] ?? "general", mailbox: "Inbox"};
  }
  const last = rest.at(-1) ?? "";
  // "&ui=minimal" may stand behind a path that has no query.
  if (last === "compose" || last.startsWith("compose&")) {
    const query = new URLSearchParams(location.search);
    const fields = {};
    for (const name of ["to", "cc", "bcc", "subject", "body"]) {
      fields[name] = query.get(name) ?? "";
    }
    const isMinimal = query.get("ui") === "minimal" || last.includes("&ui=minimal");
    return {app: "mail", view: "compose", mailbox: rest.length > 1 ? rest[0] : "Inbox", fields, isMinimal};
  }
  // A message may stand without its thread: the service finds a thread by either id.
  const [threadId, emailId = threadId] = (rest[1] ?? "").split(".");
  return {app: "mail", view: threadId ? "message" : "list", mailbox: rest[0] ?? "Inbox", threadId, emailId};
}

function decode(segment) {
  try {
    return decodeURIComponent(segment);
  } catch {
    return segment;
  }
}
