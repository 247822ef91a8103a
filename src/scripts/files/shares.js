// One file after the other, from its refusal to its link.

let shares = Promise.resolve();  // the end of the last one; each is a {filename, file, letter, line}

const giveUp = async (share, error) => {
  const {filename} = share;
  log(`failed to auto-share "${filename}": ${error}`);
  findChip(share)?.remove();
  try {
    await addToBody(share);
  } catch (secondError) {
    log(`also could not write the error message into compose for "${filename}": ${secondError}`);
  }
  report('error', filename, String(error));
};

const handleOversizedFile = async (share) => {
  const {filename} = share;
  log(`processing oversized attachment: ${filename}`);
  try {
    showUploadingChip(share);
  } catch (error) {
    log(`could not show the uploading chip for "${filename}": ${error}`);
  }
  try {
    const url = await uploadAndShare(share);
    log(`uploaded and shared "${filename}": ${url}`);
    resolveChipToSuccess(share, url);
    await addToBody(share, url);
  } catch (error) {
    await giveUp(share, error);
    return;
  }
  log(`inserted share link for "${filename}" into the open compose`);
  report('success', filename);
};

// One file at a time, so that several refused ones don't race.
const enqueue = (filename, {file, compose}) => {
  const letter = {compose: compose ?? composeAround(), draft: null, isGone: false, seen: []};
  look(letter);
  openLetters.add(letter);
  shares = shares.then(() => handleOversizedFile({filename, file, letter, line: ''}))
               .finally(() => openLetters.delete(letter))
               .catch((error) => log(`"${filename}" was given up: ${error}`));
};
