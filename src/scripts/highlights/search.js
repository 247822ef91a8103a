// Looks for texts in a text.

const LONG_TEXT = 256;  // from here on a search mustn't be quadratic

// The places of `exact` in `text`, overlapping ones too. Neither is ours, and indexOf() takes the product
// of both lengths where a text repeats itself: a long one is looked for in time that grows with their sum
// (Knuth, Morris, Pratt).
function* occurrencesOf(text, exact) {
  if (exact.length <= LONG_TEXT) {
    for (let start = text.indexOf(exact); start >= 0; start = text.indexOf(exact, start + 1)) {
      yield start;
    }
    return;
  }
  const borders = new Int32Array(exact.length + 1);  // of a beginning of that length: its longest border
  const extend = (matched, unit) => {
    while (matched > 0 && exact.charCodeAt(matched) !== unit) {
      matched = borders[matched];
    }
    return exact.charCodeAt(matched) === unit ? matched + 1 : 0;
  };
  for (let i = 1; i < exact.length; ++i) {
    borders[i + 1] = extend(borders[i], exact.charCodeAt(i));
  }
  let matched = 0;
  for (let i = 0; i < text.length; ++i) {
    matched = extend(matched, text.charCodeAt(i));
    if (matched === exact.length) {
      yield i + 1 - matched;
      matched = borders[matched];
    }
  }
}

// One text in which many highlights are looked up. What was found or not found stays known.
class TextSearch {
  #scans = new Map();  // exact -> {starts, rest}

  constructor(text) {
    this.text = text;
  }

  // The offset of that occurrence, from 0; null for none, and for an empty text: nobody sees its mark.
  startOf(exact, occurrenceIndex) {
    if (exact === '' || occurrenceIndex < 0) {
      return null;
    }
    let scan = this.#scans.get(exact);
    if (!scan) {
      scan = {starts: [], rest: occurrencesOf(this.text, exact)};
      this.#scans.set(exact, scan);
    }
    while (scan.starts.length <= occurrenceIndex) {
      const {value, done} = scan.rest.next();
      if (done) {
        return null;
      }
      scan.starts.push(value);
    }
    return scan.starts[occurrenceIndex];
  }
}
