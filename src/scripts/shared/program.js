// The way to the program.

// False when the program can't have it. Without the program there is nobody to tell, and the page is none
// the worse for it.
const post = (message) => {
  try {
    return window.webkit.messageHandlers.ondrel.postMessage(message) !== false;
  } catch {
    return false;
  }
};

// Of lines in the program's log that begin alike.
const logger = (beginning) => (text) => console.log(`[Ondrel] ${beginning}${text}`);
