// Mail text without markup: what a plain-text message quotes, and what is sent for one.

const lineWidth = 70;
const blocks = new Set(["P", "DIV", "LI", "UL", "OL", "H1", "H2", "H3", "BLOCKQUOTE", "TR", "PRE"]);

function textOf(node) {
  if (node.nodeType === Node.TEXT_NODE) {
    return node.data.replace(/\s+/g, " ");
  }
  const text = [...node.childNodes].map(textOf).join("");
  return node.tagName === "BR" ? "\n" : blocks.has(node.tagName) ? `${text.trim()}\n\n` : text;
}

export function textOfHtml(html) {
  const {body} = new DOMParser().parseFromString(html, "text/html");
  return textOf(body).replace(/\n{3,}/g, "\n\n").trim();
}

/** The lines of a quote, each with its mark. */
export function quoted(text) {
  const wrap = (paragraph) => {
    const lines = [""];
    for (const word of paragraph.split(" ")) {
      const line = lines.at(-1);
      if (line && line.length + word.length + 3 > lineWidth) {
        lines.push(word);
      } else {
        lines[lines.length - 1] = line ? `${line} ${word}` : word;
      }
    }
    return lines;
  };
  return text.split("\n").flatMap(wrap).map((line) => line ? `> ${line}` : ">").join("\n");
}

export function htmlOfText(text) {
  const holder = document.createElement("div");
  for (const line of text.split("\n")) {
    const paragraph = document.createElement("p");
    paragraph.textContent = line;
    holder.append(paragraph);
  }
  return holder.innerHTML;
}
