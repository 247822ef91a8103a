/** The address bar as state: what is shown follows from the address alone. */
export class Router {
  #show;

  /** `show(historyState)` draws what the address says; it is called for every change of address. */
  constructor(show) {
    this.#show = show;
    addEventListener("popstate", (event) => this.#show(event.state));
    document.addEventListener("click", (event) => this.#followLink(event));
  }

  start() {
    this.#show(history.state);
  }

  go(url, state = null) {
    history.pushState(state, "", url);
    this.#show(state);
  }

  replace(url, state = null) {
    history.replaceState(state, "", url);
    this.#show(state);
  }

  // Plain clicks on links to the application's own pages stay in this document; all others are the browser's.
  #followLink(event) {
    const link = event.target.closest?.("a[href]");
    const isPlain =
        event.button === 0 && !event.ctrlKey && !event.shiftKey && !event.altKey && !event.metaKey;
    if (!link || !isPlain || event.defaultPrevented || link.target || link.hasAttribute("download")) {
      return;
    }
    const url = new URL(link.href);
    const isOurs = url.origin === location.origin && /^\/(mail|settings)\//.test(url.pathname);
    if (isOurs && url.pathname !== "/mail/long") {
      event.preventDefault();
      this.go(url.pathname + url.search);
    }
  }
}
