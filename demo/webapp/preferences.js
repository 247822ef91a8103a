// The user's choices, kept in this browser.

const defaults = {
  composeFormat: "rich",        // or "plain"
  messageView: "conversation",  // or "single"
  signature: "Robin Ashworth",
};

export const preference = (name) => localStorage.getItem(name) ?? defaults[name];
export const setPreference = (name, value) => localStorage.setItem(name, value);
