import {upload} from "/app/data.js";
import {h, icon} from "/app/dom.js";
import {alertModal} from "/app/modal.js";

const limitMB = 5;  // of all attachments of a message

/** The files of a message that is being written: chosen, dropped or pasted. */
export class Attachments {
  #files = [];  // {name, size, blobId}; no blobId while the upload runs

  /** `target` is the part of the page where files may be dropped and pasted. */
  constructor(target) {
    this.element = h("div", {class: "u-flex u-flex-wrap u-m-0 u-hideifempty"});
    this.button =
        h("button", {
          class: "v-Button is-icon s-attach",
          type: "button",
          title: "Attach files",
          onclick: () => this.#choose()
        },
          icon("attachment"));
    for (const type of ["dragenter", "dragover", "dragleave", "drop"]) {
      target.addEventListener(type, (event) => this.#drag(event, target));
    }
    target.addEventListener("paste", (event) => this.#take(event, event.clipboardData?.files));
  }

  get isEmpty() {
    return this.#files.length === 0;
  }
  get blobIds() {
    return this.#files.map(({blobId}) => blobId).filter(Boolean);
  }

  // The input lives for one choice only.
  #choose() {
    const input = h("input", {type: "file", multiple: true, hidden: true, class: "s-attach-input"});
    input.addEventListener("change", () => {
      this.#add([...input.files]);
      input.remove();
    });
    this.element.before(input);
    input.click();
  }

  // Text and links that are dragged are left to the editor.
  #drag(event, target) {
    if (event.dataTransfer?.types.includes("Files")) {
      event.preventDefault();
      const leaves = event.type === "dragleave" && !target.contains(event.relatedTarget);
      target.classList.toggle("is-dropTarget", event.type !== "drop" && !leaves);
      this.#take(event, event.type === "drop" ? event.dataTransfer.files : []);
    }
  }

  #take(event, files) {
    if (files?.length > 0) {
      event.preventDefault();
      this.#add([...files]);
    }
  }

  #add(files) {
    for (const file of files) {
      const total = this.#files.reduce((sum, {size}) => sum + size, file.size);
      if (total > limitMB * 1e6) {
        alertModal(
            "File too large",
            `Cannot attach file ${file.name}. The total size of attached files cannot exceed ${limitMB}MB.`);
      } else {
        this.#attach(file);
      }
    }
  }

  async #attach(file) {
    const record = {name: file.name, size: file.size, blobId: null};
    this.#files.push(record);
    const chip =
        h("div", {class: "v-ComposeAttachment"},
          h("div", {class: "u-flex u-relative u-items-center"}, icon("attachment"),
            h("span", {class: "v-ComposeAttachment-label"}, file.name),
            h("p", {class: "v-ComposeAttachment-size"}, `${Math.ceil(file.size / 1000)} kB`),
            h("button", {
              class: "v-Button is-icon v-ComposeAttachment-remove",
              type: "button",
              title: "Remove",
              onclick: () => this.#remove(record, chip),
            },
              icon("close"))));
    this.element.append(chip);
    try {
      record.blobId = (await upload(file)).blobId;
    } catch (error) {
      console.warn("attachment not uploaded:", String(error));
      this.#remove(record, chip);
    }
  }

  #remove(record, chip) {
    this.#files = this.#files.filter((file) => file !== record);
    chip.remove();
  }
}
