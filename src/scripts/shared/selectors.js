// Where the application has its messages, and what marks our own elements in them.
const CONTAINER_SELECTOR = '.v-Message-body, .v-MessageView, .v-MessageView-body';
const CARD_SELECTOR = '.v-MessageCard';
const EDITOR_SELECTOR =
    '[contenteditable]:not([contenteditable="false" i]), .v-RichText-input, .v-Compose, #compose';
const FOCUSED_CLASS = 'is-focused';
const HID_ATTR = 'data-ondrel-hid';
const MARK_SELECTOR = `mark[${HID_ATTR}]`;
const ORPHAN_ATTR = 'data-ondrel-orphan-banner';
const ORPHAN_IDS_ATTR = 'data-ondrel-orphan-ids';
