// The rich-text editor.

// The application goes on working on a new quote, on the signature below it above all. Raise this if a
// signature still goes missing.
const RICH_SWAP_DELAY_MS = 250;
const RICH_VERIFY_DELAY_MS = 300;

// The first of the reply's editors, better one with a quote.
const richEditor = (swap) => {
  const editors = replyEditors(swap, RICH_EDITOR_SELECTOR);
  return editors.find((editor) => editor.querySelector('blockquote')) ?? editors[0];
};

// What follows the quote was there before the swap: if the application has drawn the editor anew without
// it, it is put back.
const verifyTail = (editable, blockquote, tail, editsBefore) => {
  const isLost = blockquote.isConnected && !editable.contains(blockquote.nextSibling);
  const outcome = !blockquote.isConnected ? 'blockquote no longer in the document, skipping' :
      !isLost                             ? 'content after the quote is still present' :
      edits !== editsBefore ? 'content after the quote went missing, while the user was writing' :
                              'content after the quote went missing, restoring it';
  log(`rich-text tail check: ${outcome}`);
  if (isLost && edits === editsBefore) {
    blockquote.after(...tail);
    sendOwnInput(editable);
  }
};

// `swap` is the pending swap of the time when this was scheduled; another may be pending by now.
const performRichSwap = (swap) => {
  const editable = richEditor(swap);
  const blockquote = editable?.querySelector('blockquote');
  if (!blockquote) {
    log('rich-text swap: blockquote gone by the time the delay elapsed, will retry');
    [richSwapArmed, swap.quote] = [false, null];
    return;
  }
  if (edits !== swap.quote.edits && blockquote.textContent !== swap.quote.text) {
    log('rich-text swap: the user has changed the quote');
    endSwap(swap);
    return;
  }
  const siblings = blockquote.parentNode === editable ? [...editable.childNodes] : [];
  const tail = siblings.slice(siblings.indexOf(blockquote) + 1).map((node) => node.cloneNode(true));
  blockquote.replaceChildren(swap.content);
  sendOwnInput(editable);
  const protection = tail.length > 0 ? `captured ${tail.length} trailing node(s) to protect` :
                                       'nothing trailing the quote to protect';
  log(`rich-text swap applied (${protection})`);
  endSwap(swap);
  if (tail.length > 0) {
    const editsNow = edits;
    setTimeout(
        () => attempt('tail restore', swap, () => verifyTail(editable, blockquote, tail, editsNow)),
        RICH_VERIFY_DELAY_MS);
  }
};

// Only schedules: the pending swap is cleared when it has been carried out.
const trySwapRichText = () => {
  const quote = richEditor(pendingSwap)?.querySelector('blockquote');
  if (quote === null) {
    log('rich editor found, but no blockquote yet');
  }
  if (!quote || richSwapArmed) {
    return;
  }
  richSwapArmed = true;
  const swap = pendingSwap;
  swap.quote = {text: quote.textContent, edits};
  log(`rich editor + blockquote found, scheduling swap in ${RICH_SWAP_DELAY_MS}ms`);
  setTimeout(() => attempt('rich-text swap', swap, () => performRichSwap(swap)), RICH_SWAP_DELAY_MS);
};
