// Text highlights in messages. The script offers a button over a selection, paints the program's saved
// highlights whenever the application has drawn a message, and tells of those whose text can't be found.
//
// The application owns the document and draws it anew as it likes. So a highlight is anchored to a message's
// plain text, never to nodes, and a message is known by its place in a report of the message bodies alone:
// the program knows which message stands there.
//
//   change in the document -> tick (300 ms) -> report to the program -> __ondrelApplyHighlights -> reconcile

// A document of another origin, such as a message in a sandboxed frame, speaks for its sender: the program
// believes it nothing, so nothing is offered there that could not be saved.
const isOfThePage = () => {
  try {
    return Boolean(top.document);
  } catch {
    return false;
  }
};

if (isOfThePage()) {
  takeAnswers();
  takeOrders();
  offerButton();
  takeClicks();
  followPage();
}
