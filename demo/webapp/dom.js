/** An element: h("a", {class: "x", href: "/", onclick: f}, "text", child, null). */
export function h(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") {
      element.addEventListener(name.slice(2), value);
    } else if (value === true) {
      element.setAttribute(name, "");
    } else if (value !== false && value !== null && value !== undefined) {
      element.setAttribute(name, value);
    }
  }
  element.append(...children.flat().filter((child) => child !== null && child !== undefined));
  return element;
}

const shapes = {
  inbox: "M4 13l2.5-8h11L20 13v6H4zm0 0h5l1 2.5h4l1-2.5h5",
  archive: "M4 5h16v4H4zm1 4h14v10H5zm4 4h6",
  drafts: "M5 19l1-4L16 5l3 3L9 18z",
  sent: "M4 12l16-7-6 15-3-6zm7 2l9-9",
  junk: "M12 4l8 14H4zm0 5v4m0 2v.5",
  trash: "M5 7h14M9 7V4h6v3m-8 0l1 13h8l1-13",
  folder: "M4 6h6l2 2h8v11H4z",
  compose: "M4 20h16M6 16l1-4 8-8 3 3-8 8z",
  settings: "M4 7h9m4 0h3M4 17h3m4 0h9M15 4.500v5M9 14.500v5",
  back: "M14 6l-6 6 6 6",
  reply: "M10 7l-5 5 5 5M5 12h8c4 0 6 2 6 6",
  "reply-all": "M12 7l-5 5 5 5M8 7l-5 5 5 5M7 12h7c4 0 6 2 6 6",
  source: "M9 8l-4 4 4 4m6-8l4 4-4 4",
  download: "M12 4v10m-4-4l4 4 4-4M5 19h14",
  window: "M13 5h6v6m0-6l-8 8M16 14v5H5V8h5",
  print: "M7 9V4h10v5M7 17H4V9h16v8h-3M7 14h10v6H7z",
  attachment: "M8 12.500l5.500-5.500a3 3 0 0 1 4 4l-7 7a4.500 4.500 0 0 1-6-6.500l6.500-6.500",
  expand: "M14 5h5v5M10 19H5v-5m14-9l-6 6m-8 8l6-6",
  close: "M6 6l12 12M18 6L6 18",
};

/** A line drawing, with the class "i-NAME". */
export function icon(name) {
  const svg = document.createElementNS("http://www.w3.org/2000/svg", "svg");
  svg.setAttribute("viewBox", "0 0 24 24");
  svg.setAttribute("class", `v-Icon i-${name}`);
  svg.setAttribute("role", "presentation");
  const path = document.createElementNS("http://www.w3.org/2000/svg", "path");
  path.setAttribute("d", shapes[name] ?? shapes.folder);
  svg.append(path);
  return svg;
}
