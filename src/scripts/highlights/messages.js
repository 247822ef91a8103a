// The messages that the application shows: the containers of their text, and the cards around these.
//
// Mail may bring the application's class names with it. So inside a container that lies in a card nothing
// counts, and a card inside a container is none. A message may stand in a frame: then its card is around the
// frame, in the document outside.

// Null for the top, and where the document outside is another origin's.
const parentOf = (frame) => frame.frameElement?.ownerDocument.defaultView ?? null;

const isInEditor = (element) => element.closest(ANY_EDITOR_SELECTOR) !== null;

const isEditorFrame = () => {
  for (let frame = window; frame; frame = parentOf(frame)) {
    if (frame.document.designMode === 'on' || (frame.frameElement && isInEditor(frame.frameElement))) {
      return true;
    }
  }
  return false;
};

// The element itself if no container is around it.
const outermostContainer = (element) => {
  let outermost = element;
  for (let around = element; around; around = around.parentElement?.closest(CONTAINER_SELECTOR)) {
    outermost = around;
  }
  return outermost;
};

const cardOf = (element) => {
  for (let inside = element; inside; inside = inside.ownerDocument.defaultView?.frameElement) {
    const card = outermostContainer(inside).closest(CARD_SELECTOR);
    if (card) {
      return card;
    }
  }
  return null;
};

// In document order, each with its card or null.
const findMessages = () => {
  const messages = [];
  if (isEditorFrame()) {
    return messages;
  }
  let outermost = null;
  let card = null;
  for (const container of document.querySelectorAll(CONTAINER_SELECTOR)) {
    const isNested = outermost?.contains(container) ?? false;
    if (!isNested) {
      outermost = container;
      card = cardOf(container);
    }
    if (!(isNested && card) && !isInEditor(container)) {
      messages.push({container, card});
    }
  }
  return messages;
};

const isCard = (element) => !element.parentElement?.closest(CONTAINER_SELECTOR) && !isInEditor(element);

// Those of the conversation, collapsed ones too: in this document, or in the first around it that has any.
const findCards = () => {
  for (let frame = window; frame; frame = parentOf(frame)) {
    const cards = [...frame.document.querySelectorAll(CARD_SELECTOR)].filter(isCard);
    if (cards.length > 0) {
      return cards;
    }
  }
  return [];
};

const isFocused = (card) => card?.classList.contains(FOCUSED_CLASS) ?? false;

// The message that the application says is open; empty when it can't be had.
const openMessageId = () => {
  try {
    const id = appController(top).message.id();
    return typeof id === 'string' ? id : '';
  } catch {
    return '';
  }
};
