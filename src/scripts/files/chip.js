// The chip: looks like an attachment of the application, but is made of plain elements. A copied progress
// element of the application would grow over the whole page.

const CHIP_ATTRIBUTE = 'data-ondrel-files-chip';  // on a chip: the file's name
const SPINNER_STYLE_ID = 'ondrel-files-spinner-style';

const addSpinnerStyle = () => {
  if (!document.getElementById(SPINNER_STYLE_ID)) {
    document.head.append(element(
        'style', {id: SPINNER_STYLE_ID},
        '@keyframes ondrelFilesSpin { to { transform: rotate(360deg); } } ' +
            '.ondrel-files-spinner { display: inline-block; width: 9px; height: 9px; margin-right: 5px; ' +
            'border: 1.5px solid rgba(0,0,0,0.18); border-top-color: rgba(0,0,0,0.55); ' +
            'border-radius: 50%; animation: ondrelFilesSpin 0.8s linear infinite; ' +
            'vertical-align: middle; }'));
  }
};

const buildChip = (filename) => {
  addSpinnerStyle();
  const removeButton =
      element('button', {class: 'v-Button v-ComposeAttachment-remove', type: 'button'}, removeIcon());
  removeButton.style.visibility = 'hidden';
  const row = element(
      'div', {class: 'u-flex u-relative u-items-center'}, paperclipIcon(),
      element('span', {class: 'v-ComposeAttachment-label'}, filename),
      element(
          'p', {class: 'v-ComposeAttachment-size'}, element('span', {class: 'ondrel-files-spinner'}),
          TEXTS.chipUploading),
      element('span', {class: 'v-ComposeAttachment-divider'}), removeButton);
  return element('div', {class: 'v-ComposeAttachment', [CHIP_ATTRIBUTE]: filename}, row);
};

// By comparison and not by a selector: a name may hold anything.
const findMarked = (root, attribute, filename) => [...root.querySelectorAll(`[${attribute}]`)].find(
    (marked) => marked.getAttribute(attribute) === filename);

// Where the letter's chips are: in what belongs to it, or the document for an editor that stands alone.
const chipRoot = ({letter: {compose}}) => compose?.matches(COMPOSE_SELECTOR) ? compose : document;
const findChip = (share) => findMarked(chipRoot(share), CHIP_ATTRIBUTE, share.filename);

const showUploadingChip = (share) => {
  // The row of attachments is there from the moment when compose opens, hidden while it is empty.
  const row = chipRoot(share).querySelector(ATTACHMENTS_SELECTOR);
  if (!row) {
    throw new Error('could not find the attachment chip row');
  }
  if (!findChip(share)) {
    row.append(buildChip(share.filename));
  }
};

const resolveChipToSuccess = (share, url) => {
  const {filename} = share;
  const chip = findChip(share);
  if (!chip) {
    return;
  }
  chip.querySelector('.v-ComposeAttachment-label')
      .replaceWith(element(
          'a', {class: 'v-ComposeAttachment-label', href: url, target: '_blank', rel: 'noopener'}, filename));
  chip.querySelector('.v-ComposeAttachment-size').textContent = TEXTS.chipShared;
  const removeButton = chip.querySelector('.v-ComposeAttachment-remove');
  removeButton.style.visibility = '';
  removeButton.addEventListener('click', (event) => {
    event.preventDefault();
    chip.remove();
    removeFromBody(share);
    log(`removed the Fastmail Files share for "${filename}"`);
  });
};
