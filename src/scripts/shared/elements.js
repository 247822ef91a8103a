const isText = (node) => node.nodeType === Node.TEXT_NODE;

const styled = (tag, style) => {
  const element = document.createElement(tag);
  Object.assign(element.style, style);
  return element;
};

const swallow = (event) => {
  event.preventDefault();
  event.stopPropagation();
};

// Those that a MutationObserver has seen coming into the document.
const addedElements = (records, selector) =>
    records.flatMap(({addedNodes}) => [...addedNodes])
        .filter((node) => node.nodeType === Node.ELEMENT_NODE)
        .flatMap((node) => [...(node.matches(selector) ? [node] : []), ...node.querySelectorAll(selector)]);
