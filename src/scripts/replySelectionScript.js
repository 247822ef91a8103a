// Lets a reply quote only what was selected in the message. It watches selections and replies without a hand
// in either, and when the editor has opened with the whole quote, puts the selection in its place.
//
//   selection -> lastSelection -> (reply on the same message) -> pendingSwap -> (quote of the application's)
//   -> swapped
//
// Each way of giving up is logged: a swap that silently doesn't happen leaves nothing else to go on.

const listen = () => {
  document.addEventListener('selectionchange', onSelectionChange);
  document.addEventListener('click', onClick, true);
  // The earliest place that sees the key: the application's shortcuts never click the button.
  window.addEventListener('keydown', onKeyDown, true);
  ['input', 'paste', 'drop'].forEach((type) => document.addEventListener(type, onEdit, true));
};

let root = document.documentElement;
listen();

new MutationObserver(() => {
  if (document.documentElement !== root) {
    root = document.documentElement;
    listen();  // a document that is written anew has lost its listeners, and not its observers
  }
  if (!pendingSwap) {
    return;
  }
  const swap = pendingSwap;
  attempt('swap', swap, () => {
    trySwapRichText();
    if (trySwapPlainText()) {
      endSwap(swap);
    } else if (isStale(swap)) {
      log('pending swap expired without finding a matching compose editor');
      endSwap(swap);
    }
  });
}).observe(document, {childList: true, subtree: true});

log(`script installed on ${location.href}`);
