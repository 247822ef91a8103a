// Waiting, with an eye on the letters.

const QUICK_POLL_ATTEMPTS = 40;
const QUICK_POLL_INTERVAL_MS = 250;

// The first truthy value of fn; an exception of it counts as none.
const poll = async (fn, attempts, intervalMs, description) => {
  for (let attempt = 0; attempt < attempts; ++attempt) {
    openLetters.forEach(look);
    const value = valueOrNull(fn);
    if (value) {
      return value;
    }
    await new Promise((resolve) => setTimeout(resolve, intervalMs));
  }
  throw new Error(`timed out waiting for ${description}`);
};

const pollQuickly = (fn, description) => poll(fn, QUICK_POLL_ATTEMPTS, QUICK_POLL_INTERVAL_MS, description);

// The editor of the letter, once it is shown. Another letter in its place isn't waited for.
const editorOf = (letter) => poll(
    () => !letter.isGone && letter.compose.isConnected && editorIn(letter.compose),
    letter.isGone ? 1 : QUICK_POLL_ATTEMPTS, QUICK_POLL_INTERVAL_MS, 'the compose editor to be present');
