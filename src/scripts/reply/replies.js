// A reply, by button or by key: only watched, the application's own handlers open the editor.

const armPendingSwapIfMatching = (card, source) => {
  const obstacle = !lastSelection ? 'no captured selection' :
      isStale(lastSelection)      ? 'captured selection too stale' :
      card !== lastSelection.card ? 'but on a different message card than the selection' :
                                    '';
  if (obstacle) {
    log(`${source}, ${obstacle}`);
    return;
  }
  const {content, text} = lastSelection;
  const otherEditors = new Set([...document.querySelectorAll(EDITOR_SELECTOR)].filter(
      (editor) => /\S/.test(editor.value ?? editor.textContent)));
  pendingSwap = {content, text, capturedAt: Date.now(), otherEditors, quote: null};
  lastSelection = null;
  richSwapArmed = false;
  log(`armed pending swap (${source})`);
};

const onClick = ({target}) => {
  if (target.closest?.(CARD_SELECTOR)) {
    log(`click in a message card on ${target.tagName} with class "${target.getAttribute('class') ?? ''}"`);
  }
  const button = target.closest?.(REPLY_SELECTOR);
  if (button) {
    armPendingSwapIfMatching(button.closest(CARD_SELECTOR), 'reply clicked');
  }
};

const onKeyDown = (event) => {
  const key = event.key?.toLowerCase();
  if (key !== 'r' && key !== 'a') {
    return;
  }
  const {target} = event;
  const held = ['metaKey', 'ctrlKey', 'altKey', 'shiftKey'].map((name) => event[name]);
  log(`keydown ${key} on ${target.tagName} (meta, control, alt, shift: ${held.join(', ')})`);
  const otherMeaning = held.includes(true)                          ? 'a modifier is held' :
      target.closest?.('input, textarea, [contenteditable="true"]') ? 'typed into a field' :
                                                                      '';
  if (otherMeaning) {
    log(`keydown ${key}: ${otherMeaning}, not a reply`);
    return;
  }
  // A single message in view never has the class, so its absence contradicts nothing.
  const focused = document.querySelector(`${CARD_SELECTOR}.${FOCUSED_CLASS}`);
  const source = `reply shortcut (${key})`;
  if (!focused) {
    log(`${source}: no .v-MessageCard.is-focused on the page, falling back to the selection card`);
  }
  armPendingSwapIfMatching(focused ?? lastSelection?.card, `${source} pressed`);
};
