// What our own elements in messages are known by.
const HID_ATTR = 'data-ondrel-hid';
const MARK_SELECTOR = `mark[${HID_ATTR}]`;
const ORPHAN_ATTR = 'data-ondrel-orphan-banner';
const ORPHAN_IDS_ATTR = 'data-ondrel-orphan-ids';
