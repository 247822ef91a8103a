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
