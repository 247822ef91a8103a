// What the user reads, in the user's language: the program fills it in.

const TEXTS = Object.freeze({/* texts */});
const filledIn = (text, value) => text.replace('%', () => value);
