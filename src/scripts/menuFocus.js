// What has the keyboard, in the frame that has it, and where; null when the page shows a menu of its own.

let element = document.activeElement ?? document.documentElement;
let left = 0;
let top = 0;
while (element.contentDocument?.activeElement) {
  const box = element.getBoundingClientRect();
  left += box.left + element.clientLeft;
  top += box.top + element.clientTop;
  element = element.contentDocument.activeElement;
}
const isField = element.matches('input, textarea');
const selection = element.ownerDocument.getSelection();
const range = !isField && selection?.rangeCount > 0 ? selection.getRangeAt(0) : null;
const caret = range?.getBoundingClientRect();
const isPlaced = Boolean(caret) && (caret.width > 0 || caret.height > 0);
const box = isPlaced ? caret : element.getBoundingClientRect();
const x = Math.min(Math.max(box.left, 0), innerWidth - 1);
const y = Math.min(Math.max(isPlaced ? box.bottom : Math.min(box.bottom, box.top + 24), 0), innerHeight - 1);
const asked = new MouseEvent('contextmenu', {
  bubbles: true,
  cancelable: true,
  composed: true,
  button: 2,
  clientX: x,
  clientY: y,
});
// The last to hear of it: what nobody prevents, the engine would keep for the next menu of the page's own.
let isTaken = false;
const hear = (event) => {
  isTaken = event.defaultPrevented;
  event.preventDefault();
};
const page = element.ownerDocument.defaultView;
page.addEventListener('contextmenu', hear);
element.dispatchEvent(asked);
page.removeEventListener('contextmenu', hear);
if (isTaken) {
  return null;
}
return {
  link: element.closest('a[href]')?.href ?? '',
  isSelection: isField ? element.selectionStart !== element.selectionEnd : range?.collapsed === false,
  isEditable: isField ? !element.readOnly && !element.disabled : element.isContentEditable,
  x: left + x,
  y: top + y,
};
