/**
 * Single-key shortcuts: `actions` maps a key in lower case to a function. Keys typed into a field are left
 * alone.
 */
export function installShortcuts(actions) {
  document.addEventListener("keydown", (event) => {
    const isTyping = event.target.closest?.("input, textarea, select, [contenteditable='true']");
    if (isTyping || event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) {
      return;
    }
    const action = actions[event.key.toLowerCase()];
    if (action) {
      event.preventDefault();
      action();
    }
  });
}
