/**
 * Single-key shortcuts: `actions` maps a key in lower case to a function, which answers false when there is
 * nothing to do: then the key is left to the program. Keys typed into a field are left alone.
 */
export function installShortcuts(actions) {
  document.addEventListener("keydown", (event) => {
    const isTyping = event.target.closest?.("input, textarea, select, [contenteditable='true']");
    if (isTyping || event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) {
      return;
    }
    const action = actions[event.key.toLowerCase()];
    if (action && action() !== false) {
      event.preventDefault();
    }
  });
}
