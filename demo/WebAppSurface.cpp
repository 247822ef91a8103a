#include "demo/WebAppSurface.h"

#include "demo/Resources.h"

#include <fmt/core.h>

namespace ondrel::demo {

namespace {

constexpr const char* html = "text/html; charset=utf-8";
constexpr const char* startPage = "/mail/Inbox/?u=demo";

void file(Exchange& exchange) {
  const auto name = exchange.path().substr(std::string_view("/app/").size());
  const auto bytes = resource("webapp/" + name);
  if (!bytes) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
    return;
  }
  exchange.setHeader("Cache-Control", "no-cache");
  exchange.reply(SOUP_STATUS_OK, contentTypeOf(name), *bytes);
}

void download(Exchange& exchange) {
  const auto name = exchange.path().substr(std::string_view("/download/").size());
  if (name == "contacts.vcf") {
    // The word in capitals, since header values of this kind know no case.
    exchange.setHeader("Content-Disposition", "ATTACHMENT; filename=\"contacts.vcf\"");
    exchange.reply(SOUP_STATUS_OK, "text/vcard",
                   "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:Nadia Okafor\r\nEND:VCARD\r\n");
  } else if (name == "settings.json") {
    exchange.reply(SOUP_STATUS_OK, "application/json",
                   "{\"language\": \"en\", \"density\": \"comfortable\"}\n");
  } else if (name == "archive.mbox") {
    exchange.setHeader("Content-Disposition", "attachment; filename=\"archive.mbox\"");
    exchange.reply(SOUP_STATUS_OK, "application/mbox", std::string(std::size_t{8} << 20, 'm'));
  } else {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
  }
}

// Where to go after the sign-in: pages of the application only, never another site.
std::string safeTarget(const std::optional<std::string>& next) {
  const bool isOwn = next && (next->starts_with("/mail/") || next->starts_with("/settings/")) &&
                     next->find_first_of("\r\n\\") == std::string::npos;
  return isOwn ? *next : startPage;
}

} // namespace

void WebAppSurface::addTo(Router& router) {
  const auto page = [this](Exchange& exchange) { this->page(exchange); };
  router.add(Site::web, "/mail/", page);
  router.add(Site::web, "/settings/", page);
  router.add(Site::web, "/mail/long", [this](Exchange& exchange) { printView(exchange); });
  router.add(Site::web, "/mail/body/", [this](Exchange& exchange) { messageBody(exchange); });
  router.add(Site::web, "/mail", [](Exchange& exchange) { exchange.redirect(startPage); });
  router.add(Site::web, "/settings",
             [](Exchange& exchange) { exchange.redirect("/settings/general?u=demo"); });
  router.add(Site::web, "/", [this](Exchange& exchange) {
    if (exchange.path() != "/")
      exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
    else if (signIn_.isSignedIn(exchange))
      exchange.redirect(startPage);
    else
      this->page(exchange);
  });
  router.add(Site::web, "/app/", file);
  router.add(Site::web, "/download/", download);
  router.add(Site::web, "/sign-in", [this](Exchange& exchange) { signIn(exchange); });
  router.add(Site::web, "/sign-out", [this](Exchange& exchange) {
    signIn_.takeCookie(exchange);
    tokens_.expire();
    exchange.redirect("/");
  });
}

void WebAppSurface::page(Exchange& exchange) const {
  exchange.setHeader("Cache-Control", "no-store");
  exchange.setHeader("Content-Security-Policy",
                     "default-src 'self'; style-src 'self' 'unsafe-inline'; img-src 'self' data: "
                     "http://usercontent.localhost:*; object-src 'none'; base-uri 'none'; frame-src 'self'");
  const auto* name = signIn_.isSignedIn(exchange) ? "webapp/index.html" : "webapp/signin.html";
  exchange.reply(SOUP_STATUS_OK, html, resource(name).value_or(""));
}

void WebAppSurface::printView(Exchange& exchange) const {
  if (!signIn_.isSignedIn(exchange)) {
    page(exchange);
    return;
  }
  std::string body;
  for (const auto* email : store_.thread("T2")) {
    body += fmt::format("<article><h1>{}</h1><p class=\"meta\">{}, {}</p>{}</article>\n",
                        escapeHtml(email->subject.value_or("")), escapeHtml(email->from.name),
                        mailTime(email->receivedAt), email->html);
  }
  exchange.setHeader("Cache-Control", "no-store");
  exchange.reply(SOUP_STATUS_OK, html,
                 "<!doctype html><html lang=\"en\"><meta charset=\"utf-8\"><title>Print view</title>"
                 "<link rel=\"stylesheet\" href=\"/app/print.css\"><body>\n" +
                     body + "</body></html>\n");
}

void WebAppSurface::messageBody(Exchange& exchange) const {
  const auto name = exchange.path().substr(std::string_view("/mail/body/").size());
  const auto* email = name.ends_with(".html") ? store_.email(name.substr(0, name.rfind('.'))) : nullptr;
  if (!signIn_.isSignedIn(exchange) || !email || email->kind != BodyKind::ownFrame) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such page.");
    return;
  }
  exchange.setHeader("Cache-Control", "no-store");
  // Scripts inside a mail must not run with the application's rights.
  exchange.setHeader(
      "Content-Security-Policy",
      "default-src 'none'; script-src 'self'; style-src 'self' 'unsafe-inline'; img-src data:; "
      "base-uri 'none'; form-action 'none'");
  exchange.reply(SOUP_STATUS_OK, html,
                 "<!doctype html><html lang=\"en\"><meta charset=\"utf-8\"><title>Message</title>"
                 "<link rel=\"stylesheet\" href=\"/app/frame.css\"><body>\n<div class=\"v-Message-body\">" +
                     email->html + "</div>\n<script src=\"/app/frame.js\"></script></body></html>\n");
}

void WebAppSurface::signIn(Exchange& exchange) const {
  if (exchange.method() != "POST") {
    exchange.refuse(SOUP_STATUS_METHOD_NOT_ALLOWED, "Signing in is a POST.");
    return;
  }
  signIn_.giveCookie(exchange);
  exchange.redirect(safeTarget(exchange.formField("next")));
}

} // namespace ondrel::demo
