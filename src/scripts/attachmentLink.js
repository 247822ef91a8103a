// Looks for the link to an attachment on the page of its message, and brings out what the page has folded up.
// It is evaluated again and again until it gives the link's address; before that it tells how many links of
// that kind are there.

document.querySelector(SHOW_MORE_SELECTOR)?.click();
document.querySelectorAll(COLLAPSED_HEADER_SELECTOR).forEach((header) => header.click());

const links = [...document.querySelectorAll('a[href]')].filter((link) => link.href.includes(contentDomain));
return links.find((link) => link.href.includes(blobId))?.href ?? {_linkCount: links.length};
