const styled = (tag, style) => {
  const element = document.createElement(tag);
  Object.assign(element.style, style);
  return element;
};

const swallow = (event) => {
  event.preventDefault();
  event.stopPropagation();
};

// Tells the application that what is in its editor has changed.
const sendInput = (editor) => editor.dispatchEvent(new Event('input', {bubbles: true}));

// Those that a MutationObserver has seen coming into the document.
const addedElements = (records, selector) =>
    records.flatMap(({addedNodes}) => [...addedNodes])
        .filter((node) => node.nodeType === Node.ELEMENT_NODE)
        .flatMap((node) => [...(node.matches(selector) ? [node] : []), ...node.querySelectorAll(selector)]);
