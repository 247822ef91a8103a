// Looks for the link to an attachment on the page of its message, and brings out what the page has folded up.
// It is evaluated again and again until it gives the link's address; before that it tells how many links of
// that kind are there.
//
// Mail may bring the application's class names with it, and links that look like those to its attachments:
// what stands in a message's text is its sender's, and so is what a letter quotes.

const MAIL_SELECTOR = `${CARD_SELECTOR} :is(${TEXT_SELECTOR}), ${RICH_EDITOR_SELECTOR}`;

const findAll = (selector) => [...document.querySelectorAll(selector)].filter(
    (element) => !element.closest(MAIL_SELECTOR));

// The domain may be given with a port.
const isUserContent = ({protocol, host, hostname}) => /^https?:$/.test(protocol) &&
    [host, hostname].some((name) => name === contentDomain || name.endsWith(`.${contentDomain}`));

findAll(SHOW_MORE_SELECTOR)[0]?.click();
findAll(COLLAPSED_HEADER_SELECTOR).forEach((header) => header.click());

const links = findAll('a[href]').filter(isUserContent);
return links.find(({pathname, search}) => (pathname + search).includes(blobId))?.href ??
    {_linkCount: links.length};
