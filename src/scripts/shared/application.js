// The service's web application, as far as the scripts know it: its classes, its elements, its own objects.

const TEXT_SELECTOR = '.v-Message-body, .v-MessageView-body';   // of a message
const CONTAINER_SELECTOR = `${TEXT_SELECTOR}, .v-MessageView`;  // around a message's text
const CARD_SELECTOR = '.v-MessageCard';
const SHOW_MORE_SELECTOR = '.v-MessageCard-showMore';
const COLLAPSED_HEADER_SELECTOR = '.v-MessageCard.is-collapsed .v-MessageCard-header';
const FOCUSED_CLASS = 'is-focused';
const REPLY_SELECTOR = '.s-reply, .s-small-reply, .s-reply-all';

const LIST_SELECTOR = 'ul[class*="v-Mailbox"]';

const COMPOSE_ID = 'compose';  // on a page of its own
const COMPOSE_SELECTOR = '.v-Compose';
const LETTER_SELECTOR = `#${COMPOSE_ID}, ${COMPOSE_SELECTOR}`;
const RICH_EDITOR_SELECTOR = '[contenteditable="true"].v-RichText-input';
const PLAIN_EDITOR_SELECTOR = 'textarea.v-TextInput-input';
const EDITOR_SELECTOR = `${RICH_EDITOR_SELECTOR}, ${PLAIN_EDITOR_SELECTOR}`;
const ANY_EDITOR_SELECTOR =
    `[contenteditable]:not([contenteditable="false" i]), .v-RichText-input, ${LETTER_SELECTOR}`;
const WINDOW_ICON_SELECTOR = 'svg[class*="i-expand"], svg[class*="i-close"], svg[class*="i-sidebar"]';
const SIDEBAR_SELECTOR = '[class*="v-ContextualSidebar"]';
const ATTACHMENTS_SELECTOR = '.u-flex.u-flex-wrap.u-m-0.u-hideifempty';
const SEND_SELECTOR = '.s-send';
const SEND_DIALOG_SELECTOR = '.v-Compose-sendDialog';

const TOAST_SELECTOR = '.v-Notification-message';
const TOAST_ACTION_SELECTOR = '.v-Notification-action';
const BOX_SELECTOR = '.v-Modal, [role="dialog"], [role="alertdialog"], dialog[open]';
const ALERT_SELECTOR = 'div[role="alertdialog"].u-modal';
const ALERT_TEXT_SELECTOR = 'p.u-trim';
const NOTIFICATION_SETTING_ID = 's-settings-notifications';

// Undefined while the application is still loading, and on other pages.
const application = (page = window) => page.FastMail;
const applicationRouter = (page) => application(page)?.router;
const appController = (page) => applicationRouter(page)?.appController;
