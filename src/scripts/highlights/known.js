// The highlights that are known of each container: what the program has answered for it, and what the user
// has made in it since. They belong to the element. One that comes new, or back, or has been drawn for
// another message, has none until the program has answered for it.

// container -> {since, answered, made}. Answers to reports before `since` were about another message.
const known = new WeakMap();

const anchorsOf = (containerEl) => {
  const {answered, made} = known.get(containerEl) ?? {answered: [], made: []};
  return [...answered, ...made];
};

const hasAnchor = (containerEl, id) => anchorsOf(containerEl).some((anchor) => anchor.id === id);

// Takes highlights out of what the next reconcile paints.
const forget = (containerEl, isForgotten) => {
  const highlights = known.get(containerEl);
  if (highlights) {
    highlights.answered = highlights.answered.filter(({id}) => !isForgotten(id));
    highlights.made = highlights.made.filter(({id}) => !isForgotten(id));
  }
};

const learn = (containerEl, anchors) => {
  const highlights = known.get(containerEl);
  const ids = new Set(anchors.map(({id}) => id));
  highlights.answered = anchors;
  highlights.made = highlights.made.filter(({id}) => !ids.has(id));
};
