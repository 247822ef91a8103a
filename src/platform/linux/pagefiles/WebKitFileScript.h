#pragma once

// The body of an asynchronous function that the engine runs in the page, in a script world of our own, each
// time files are over the page, dropped on it or pasted into it. Its parameter `request` is JSON:
//   task      "over", "leave", "drop" or "paste"
//   x, y      where, in CSS pixels of the viewport
//   types     the MIME types of the files, empty where unknown
//   token     the type that its file input asks for, by which the program knows the input
//   names, sizes, times   of the files that the program chooses for that input, in their order
//   picture   base64 of the only file where there is none on the disk, else empty
// It answers {accepted, lost}: whether the page has taken the event for its own, and the indices of files
// that the engine could not open.
namespace ondrel::platform::pagefiles {

inline constexpr const char* fileScriptWorld = "ondrel-files";

inline constexpr const char* fileScript = R"JS(
const {task, x, y, types, token, names, sizes, times, picture} = JSON.parse(request);

// The element that the files are over, with the place in its frame. Lives as long as the document.
const state = globalThis.ondrelFiles ??= {over: null};

// A shadow tree of the page's and a frame of its origin are looked into. In a frame of another origin there
// is none: its parent is not asked for it either.
const elementAt = () => {
  let tree = document;
  let place = {x, y};
  for (;;) {
    const element = tree.elementFromPoint(place.x, place.y);
    if (!element) {
      return null;
    }
    if (element.shadowRoot && element.shadowRoot !== tree) {
      const inner = element.shadowRoot.elementFromPoint(place.x, place.y);
      if (inner && inner !== element) {
        tree = element.shadowRoot;
        continue;
      }
    }
    if (element.localName !== 'iframe' && element.localName !== 'frame') {
      return {element, ...place};
    }
    if (!element.contentDocument) {
      return null;
    }
    const box = element.getBoundingClientRect();
    place = {x: place.x - box.left - element.clientLeft, y: place.y - box.top - element.clientTop};
    tree = element.contentDocument;
  }
};

const focused = () => {
  let element = document.activeElement ?? document.body;
  for (;;) {
    if (element?.localName === 'iframe' || element?.localName === 'frame') {
      const inner = element.contentDocument;
      if (!inner) {
        return null;
      }
      element = inner.activeElement ?? inner.body;
    } else if (element?.shadowRoot?.activeElement) {
      element = element.shadowRoot.activeElement;
    } else {
      return element;
    }
  }
};

const transfer = (files) => {
  const data = new DataTransfer();
  for (const file of files) {
    data.items.add(file);
  }
  return data;
};

const options = (view) => ({bubbles: true, cancelable: true, composed: true, view});

// Whether the page has taken it. `other` is where the files come from, or go to.
const drag = (type, at, data, other) => {
  const view = at.element.ownerDocument.defaultView;
  if (!view) {
    return false;
  }
  const event = new view.DragEvent(
      type, {...options(view), clientX: at.x, clientY: at.y, dataTransfer: data, relatedTarget: other?.element});
  return !at.element.dispatchEvent(event);
};

const moveTo = (at, data) => {
  const former = state.over;
  if (at?.element !== former?.element) {
    state.over = at;
    if (at) {
      drag('dragenter', at, data, former);
    }
    if (former) {
      drag('dragleave', former, data, at);
    }
  }
  return at !== null && drag('dragover', at, data);
};

const leave = (data) => {
  if (state.over) {
    drag('dragleave', state.over, data);
  }
  state.over = null;
};

// Before the drop only the number of the files and their types are told.
const outline = () => transfer(types.map((type) => new File([], '', {type})));

// The engine's own files, which it reads from the disk when the page reads them.
const chosen = () => new Promise((resolve) => {
  const input = state.input = document.createElement('input');
  input.type = 'file';
  input.multiple = true;
  input.accept = token;
  input.addEventListener('change', () => resolve([...input.files]));
  input.addEventListener('cancel', () => resolve([]));
  input.click();
});

const bytes = () => Uint8Array.from(atob(picture), (letter) => letter.charCodeAt(0));

const lost = [];
const files = async () => {
  const raw = picture ? [bytes()] : await chosen();
  delete state.input;
  const result = [];
  names.forEach((name, i) => {
    if (raw[i] && (picture || raw[i].size > 0 || sizes[i] === 0)) {
      result.push(new File([raw[i]], name, {type: types[i], lastModified: times[i]}));
    } else {
      lost.push(i);
    }
  });
  return result;
};

let accepted = false;
if (task === 'over') {
  accepted = moveTo(elementAt(), outline());
} else if (task === 'leave') {
  leave(outline());
} else {
  const data = transfer(await files());
  if (data.items.length > 0 && task === 'drop') {
    const at = elementAt();
    if (moveTo(at, data)) {
      accepted = drag('drop', at, data);
      state.over = null;
    }
  } else if (data.items.length > 0) {
    const element = focused();
    const view = element?.ownerDocument.defaultView;
    accepted = Boolean(view) &&
        !element.dispatchEvent(new view.ClipboardEvent('paste', {...options(view), clipboardData: data}));
  }
  leave(data);
}
return {accepted, lost};
)JS";

} // namespace ondrel::platform::pagefiles
