// Whether a new message opens in a window of its own. The program sets the user's choice once the page is
// ready; until then the name must exist, since the replaced compose actions read it.

window.composeInWindow = false;
