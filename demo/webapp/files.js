// The storage of files, a module that is loaded when it is first asked for. It adds its classes to the global
// object and its records to the global store.

import {share, upload} from "/app/data.js";
import {contentUrl} from "/app/urls.js";

const syncDelay = 300;  // milliseconds until the root folder is known

class StorageNode {
  #values;

  constructor(values) {
    this.#values = {blobId: null, isSharedLinkEnabled: false, sharedLinkUrl: null, ...values};
  }

  get(name) {
    return this.#values[name];
  }

  set(name, value) {
    this.#values[name] = value;
    if (name === "isSharedLinkEnabled" && value && !this.#values.sharedLinkUrl) {
      share(this.#values.blobId)
          .then(({path}) => this.set("sharedLinkUrl", contentUrl(location, path)))
          .catch((error) => console.warn("file not shared:", String(error)));
    }
    return this;
  }
}

class StorageNodeListController {
  #store;

  constructor({store}) {
    this.#store = store;
  }

  // There is no list of files to show the new one in: that this fails, behind the start of the upload, is as
  // it is.
  uploadToCurrent(files) {
    for (const file of files) {
      const node = new StorageNode({name: file.name});
      this.#store.add(node);
      upload(file).then(({blobId, size}) => node.set("size", size).set("blobId", blobId)).catch((error) => {
        console.warn("file not uploaded:", String(error));
      });
    }
    throw new TypeError("No view to show the upload in");
  }
}

export function installFiles({classes, store}) {
  Object.assign(classes, {StorageNode, StorageNodeListController});
  setTimeout(() => store.add(new StorageNode({name: "My Files"})), syncDelay);
}
