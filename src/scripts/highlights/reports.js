// What the program is told of the messages that the page shows. A report stands for the elements that it was
// made with: what is said later of a container names the report and the place in it.

const KEPT_REPORTS = 16;  // an answer to an earlier one comes too late to matter
const CARDS_EVENT = 'ondrelcards';

let containers = [];  // in document order, as of the last look
let cards = [];
let cardFocus = '';
let reportNumber = 0;
const reported = new Map();  // report -> its containers
let lastReport = null;       // {summary, internalId, texts: container -> text}
let hostReadyPosted = false;

const isSameList = (one, other) =>
    one.length === other.length && one.every((element, i) => element === other[i]);

const indexText = (index) => index < 0 ? '' : String(index);

const summaryOf = (messages, conversationCards) => {
  const places = new Map(conversationCards.map((card, i) => [card, i]));
  return {
    count: String(messages.length),
    focusedIndex: indexText(messages.findIndex(({card}) => isFocused(card))),
    cardCount: String(conversationCards.length),
    cardIndexes: JSON.stringify(messages.map(({card}) => places.get(card) ?? -1)),
    focusedCard: indexText(conversationCards.findIndex(isFocused)),
  };
};

// Frames look for their cards out here.
const tellFrames = () => {
  for (let i = 0; i < window.length; ++i) {
    try {
      window[i].dispatchEvent(new Event(CARDS_EVENT));
    } catch {
      // Of another origin.
    }
  }
};

// The focus moves by a class alone, which is watched on the cards only: elsewhere classes change all the
// time.
const cardObserver = new MutationObserver(() => scheduleTick());

const followCards = (found, focus) => {
  const areSame = isSameList(found, cards);
  if (!areSame) {
    cardObserver.disconnect();
    found.filter((card) => card.ownerDocument === document)
        .forEach((card) => cardObserver.observe(card, {attributes: true, attributeFilter: ['class']}));
  }
  const isNew = !areSame || focus !== cardFocus;
  cards = found;
  cardFocus = focus;
  if (isNew) {
    tellFrames();
  }
};

// Of the last report's elements those that show another message now.
const redrawnFor = (internalId) => {
  const redrawn = new Set();
  if (lastReport && lastReport.internalId !== internalId) {
    for (const [element, text] of lastReport.texts) {
      if (element.isConnected && textOf(element) !== text) {
        redrawn.add(element);
      }
    }
  }
  return redrawn;
};

const startAnew = (containerEl) => {
  clearContainer(containerEl);
  known.set(containerEl, {since: reportNumber, answered: [], made: []});
};

const report = (summary, internalId) => {
  reported.set(reportNumber, containers);
  reported.delete(reportNumber - KEPT_REPORTS);
  lastReport = {
    summary: JSON.stringify(summary),
    internalId,
    texts: new Map(containers.map((element) => [element, textOf(element)])),
  };
  const {count, focusedIndex, ...ofCards} = summary;
  post({
    type: 'ondrelHighlightContainersChanged',
    count,
    focusedIndex,
    report: String(reportNumber),
    internalId,
    ...ofCards,
  });
  if (containers.length > 0 && !hostReadyPosted) {
    hostReadyPosted = true;
    post({type: 'ondrelHighlightHostReady'});
  }
};

// Looks at the page, and tells the program if there is anything new.
const look = () => {
  const messages = findMessages();
  const before = containers;
  containers = messages.map(({container}) => container);
  const conversationCards = findCards();
  const summary = summaryOf(messages, conversationCards);
  followCards(conversationCards, summary.focusedCard);
  const internalId = openMessageId();
  const redrawn = redrawnFor(internalId);
  if (lastReport?.summary === JSON.stringify(summary) && redrawn.size === 0 &&
      isSameList(before, containers)) {
    return;
  }
  ++reportNumber;
  const stay = new Set(containers);
  before.filter((element) => !stay.has(element)).forEach((element) => known.delete(element));
  unobserved(
      () => containers.filter((element) => !known.has(element) || redrawn.has(element)).forEach(startAnew));
  report(summary, internalId);
};

// The program knows the page that was shown meanwhile.
const lookAgain = () => {
  lastReport = null;
  hostReadyPosted = false;
};

// Where a container stands, for the program: after a report if its place has changed.
const placeOf = (containerEl) => {
  look();
  return {containerIndex: String(containers.indexOf(containerEl)), report: String(reportNumber)};
};

const containerOf = (node) => containers.find((containerEl) => containerEl.contains(node));
