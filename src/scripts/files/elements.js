// Elements with their attributes, and the two icons of a chip.

const filled = (made, attributes, children) => {
  Object.entries(attributes).forEach(([name, value]) => made.setAttribute(name, value));
  made.append(...children);
  return made;
};
const element = (tag, attributes, ...children) => filled(document.createElement(tag), attributes, children);
const svgElement = (tag, attributes, ...children) =>
    filled(document.createElementNS('http://www.w3.org/2000/svg', tag), attributes, children);
const icon = (attributes, ...shapes) =>
    svgElement('svg', {viewBox: '0 0 24 24', role: 'presentation', ...attributes}, ...shapes);

const paperclipIcon = () => icon(
    {class: 'u-standardicon v-Icon i-attachment u-sq-20 u-ml-2'}, svgElement('path', {
      d: 'M9.42,13l6.23-6.19c1.13-1.13,2.22-1.2,3-.43.61.61,1.08,1.74-.22,3l-7.94,7.89a3.36,3.36,0,0,1-4.75,' +
          '0h0a3.33,3.33,0,0,1,0-4.72l6.84-6.8',
    }));

const removeIcon = () => icon(
    {
      class: 'v-Icon i-cancel',
      fill: 'none',
      stroke: 'currentColor',
      'stroke-linecap': 'round',
      'stroke-linejoin': 'round',
      'stroke-width': '1.5',
    },
    svgElement('line', {x1: 16, y1: 8, x2: 8, y2: 16}), svgElement('line', {x1: 8, y1: 8, x2: 16, y2: 16}));
