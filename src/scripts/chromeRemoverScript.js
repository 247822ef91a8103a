// Reduces a compose page to its editor.

const removeChrome = (root) => {
  // The icons of the buttons that make no sense in a window of its own.
  root.querySelectorAll(WINDOW_ICON_SELECTOR).forEach((icon) => icon.closest('button')?.remove());
  root.querySelectorAll(SIDEBAR_SELECTOR).forEach((sidebar) => sidebar.remove());
};

// Gives the cursor to whatever had it in the editor, else to the first field that waits for the user:
// behind the recipients if the address brings some.
const focus = (compose, focused) => {
  if (compose.contains(focused) && focused !== compose) {
    focused.focus();
    return;
  }
  const fields = [
    ...compose.querySelectorAll(
        'input:is([type="text"], [type="email"], [type="search"], :not([type])), textarea, [contenteditable="true"]')
  ].filter((field) => field.getClientRects().length > 0);
  const hasRecipients = /[?&]to=[^&]/.test(location.href);
  fields.find((field, i) => !field.value && !(hasRecipients && i === 0))?.focus();
};

// True once the editor is there and stands alone.
const cleanUI = () => {
  const compose = document.getElementById(COMPOSE_ID);
  if (!compose) {
    return false;
  }
  const focused = document.activeElement;
  if (compose.parentNode === document.body) {
    // Moved already: it keeps the cursor and what is selected in it.
    [...document.body.childNodes].filter((node) => node !== compose).forEach((node) => node.remove());
  } else {
    document.body.replaceChildren(compose);
    focus(compose, focused);
  }
  removeChrome(compose);
  // The application renders its buttons later than the editor, and again at times.
  new MutationObserver(() => removeChrome(compose)).observe(compose, {childList: true, subtree: true});
  return true;
};

const observer = new MutationObserver(() => {
  if (cleanUI()) {
    observer.disconnect();
  }
});
observer.observe(document.documentElement, {childList: true, subtree: true});
// The observer stays on whatever comes of this: it goes over the page once more when the editor has been
// moved.
cleanUI();
