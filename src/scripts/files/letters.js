// The letter that a file belongs to. The link is written nowhere else.

const STEPS_MS = 500;

const openLetters = new Set();  // of the shares that aren't done

const valueOrNull = (fn) => {
  try {
    return fn();
  } catch {
    return null;
  }
};

const findEditor = (root) =>
    root.querySelector(RICH_EDITOR_SELECTOR) ?? root.querySelector(PLAIN_EDITOR_SELECTOR);

// The compose element around an event's target, or else the one that is shown; an editor that stands alone
// is its own. Null if nothing is being written.
const composeAround = (target) => {
  const editor = findEditor(document);
  return target?.closest?.(COMPOSE_SELECTOR) ?? editor?.closest(COMPOSE_SELECTOR) ?? editor ??
      document.querySelector(COMPOSE_SELECTOR);
};

const editorIn = (compose) => compose.matches(EDITOR_SELECTOR) ? compose : findEditor(compose);

// What tells one letter from another: what the application's draft says, and the editor with its text.
const traitsOf = ({compose, draft}) => {
  const editor = editorIn(compose);
  const to =
      Array.from(draft?.to ?? [], (each) => each?.email ?? valueOrNull(() => each.get('email')) ?? each);
  return {
    id: valueOrNull(() => draft.id()) ?? draft?.id,
    editor,
    texts: [to.join(), draft?.subject, editor?.value ?? editor?.textContent].map(
        (text) => String(text ?? '').slice(0, 5000).replace(/[\s>]+/g, '')),
  };
};

// An application may show another letter in the same element. In one letter, one thing changes at a time:
// drafts get another id when they are saved, editors change with the format, users write things anew.
const isOtherLetter = (before, now) => {
  const beginsIn = (text, other) => text !== '' && other.includes(text.slice(0, 12));
  const isLost = (text, i) => text && !beginsIn(text, now.texts[i]) && !beginsIn(now.texts[i], text);
  const isReplaced = (trait) => before[trait] && now[trait] && before[trait] !== now[trait];
  return before.texts.filter(isLost).length + ['id', 'editor'].filter(isReplaced).length > 1;
};

// Compares with what was there about a second ago: an application may take several steps.
const look = (letter) => {
  letter.draft = valueOrNull(() => appController().draft) ?? letter.draft;
  const now = letter.compose?.isConnected && valueOrNull(() => traitsOf(letter));
  if (!now) {
    return;
  }
  letter.isGone ||= letter.seen.length > 0 && isOtherLetter(letter.seen[0], now);
  if (!(Date.now() - letter.seen.at(-1)?.at < STEPS_MS)) {
    letter.seen = [...letter.seen.slice(-1), {...now, at: Date.now()}];
  }
};
