// What a node is, past what a form's fields can put in the place of its own properties by their names.

const getterOf = ({prototype}, name) => {
  const {get} = Object.getOwnPropertyDescriptor(prototype, name);
  return (node) => get.call(node);
};
const nodeTypeOf = getterOf(Node, 'nodeType');
const parentOf = getterOf(Node, 'parentNode');
const firstChildOf = getterOf(Node, 'firstChild');
const nextSiblingOf = getterOf(Node, 'nextSibling');
const childNodesOf = getterOf(Node, 'childNodes');
const localNameOf = getterOf(Element, 'localName');
const namespaceOf = getterOf(Element, 'namespaceURI');

const isText = (node) => nodeTypeOf(node) === Node.TEXT_NODE;
const isElement = (node) => nodeTypeOf(node) === Node.ELEMENT_NODE;
const tagOf = (element) => localNameOf(element).toLowerCase();
