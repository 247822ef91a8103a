// The upload, through the application's own objects.

const UPLOAD_POLL_ATTEMPTS = 600;
const UPLOAD_POLL_INTERVAL_MS = 1000;

const loadFilesModule = async (fm) => {
  // The storage is a module of its own, whose classes don't exist before. Loading it doesn't change the
  // view.
  try {
    await fm.router.loadApp('files');
  } catch (error) {
    log(`loadApp("files") threw, continuing in case the classes are already available: ${error}`);
  }
  if (!fm.classes?.StorageNode || !fm.classes.StorageNodeListController) {
    throw new Error('FastMail Files classes still not available after loadApp("files")');
  }
};

const startUpload = (fm, folder, file) => {
  const controller = new fm.classes.StorageNodeListController({store: fm.store, folder});
  try {
    controller.uploadToCurrent([file]);
  } catch (error) {
    log('uploadToCurrent threw (expected — it tries to notify a UI view that is not mounted, after already ' +
        `starting the upload): ${error}`);
  }
};

// The record of the file once it is uploaded. Older files may have its name, in records of their own or in
// one that gets the new blob, and may become known only now.
const upload = async (fm, folder, {filename, file}) => {
  const findNode = (accepts) =>
      fm.store.getAll(fm.classes.StorageNode).find((node) => node.get('name') === filename && accepts(node));
  const blobsBefore = new Map();
  findNode((node) => {
    blobsBefore.set(node, node.get('blobId'));
    return false;
  });
  const isUploaded = (node) => {
    const [blobId, size] = [node.get('blobId'), node.get('size')];
    return blobId && blobId !== blobsBefore.get(node) && (!size || size === file.size);
  };
  startUpload(fm, folder, file);
  try {
    return await poll(
        () => findNode(isUploaded), UPLOAD_POLL_ATTEMPTS, UPLOAD_POLL_INTERVAL_MS,
        `the upload of "${filename}" to finish`);
  } catch (error) {
    // The same file again may leave its record as it was.
    const same = valueOrNull(() => findNode((node) => node.get('blobId') && node.get('size') === file.size));
    if (!same) {
      throw error;
    }
    return same;
  }
};

// The URL of the file's share link.
const uploadAndShare = async (share) => {
  const {filename, letter} = share;
  const fm = application();
  if (!fm?.store || !fm.router || typeof fm.router.loadApp !== 'function') {
    throw new Error('FastMail internals not available');
  }
  await loadFilesModule(fm);
  // The module fetches its root a moment after it has loaded. What the store gives is an array, or a
  // collection that has a find() as arrays do.
  const myFiles = await pollQuickly(
      () => fm.store.getAll(fm.classes.StorageNode).find((node) => node.get('name') === 'My Files'),
      'the "My Files" root folder to sync');
  const node = await upload(fm, myFiles, share);
  await editorOf(letter);  // nothing is shared for a letter that has gone
  node.set('isSharedLinkEnabled', true);
  return pollQuickly(() => node.get('sharedLinkUrl'), `a share link to be generated for "${filename}"`);
};
