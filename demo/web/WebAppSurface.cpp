#include "demo/web/WebAppSurface.h"

#include "demo/files/Resources.h"
#include "demo/http/PacedBody.h"

#include <fmt/core.h>

namespace ondrel::demo::web {

namespace {

constexpr const char* html = "text/html; charset=utf-8";
constexpr const char* startPage = "/mail/Inbox/?u=demo";

void replyPage(http::Exchange& exchange, std::string_view text, const char* policy) {
  exchange.setHeader("Cache-Control", "no-store");
  exchange.setHeader("Content-Security-Policy", policy);
  exchange.reply(SOUP_STATUS_OK, html, text);
}

// The application's one page, or the sign-in in its place.
void page(http::Exchange& exchange, bool isSignedIn) {
  replyPage(exchange, files::resource(isSignedIn ? "webapp/index.html" : "webapp/signin.html").value_or(""),
            "default-src 'self'; style-src 'self' 'unsafe-inline'; img-src 'self' data: "
            "http://usercontent.localhost:*; object-src 'none'; base-uri 'none'; frame-src 'self'");
}

void printView(http::Exchange& exchange, const mail::MailStore& store) {
  std::string body;
  for (const auto* email : store.thread("T2"))
    body += fmt::format("<article><h1>{}</h1><p class=\"meta\">{}, {}</p>{}</article>\n",
                        mail::escapedHtml(email->subject.value_or("")), mail::escapedHtml(email->from.name),
                        mail::mailTime(email->receivedAt), email->html);
  exchange.setHeader("Cache-Control", "no-store");
  exchange.reply(SOUP_STATUS_OK, html,
                 "<!doctype html><html lang=\"en\"><meta charset=\"utf-8\"><title>Print view</title>"
                 "<link rel=\"stylesheet\" href=\"/app/print.css\"><body>\n" +
                     body + "</body></html>\n");
}

// A message as a page of its own. Scripts inside a mail must not run with the application's rights.
void messageBody(http::Exchange& exchange, const mail::MailStore& store, bool isSignedIn) {
  const auto name = exchange.pathBelow("/mail/body/");
  const auto* email = store.email(name.substr(0, name.rfind(".html")));
  if (!isSignedIn || !email || email->kind != mail::BodyKind::ownFrame)
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such page.");
  else
    replyPage(exchange,
              "<!doctype html><html lang=\"en\"><meta charset=\"utf-8\"><title>Message</title>"
              "<link rel=\"stylesheet\" href=\"/app/frame.css\"><body>\n<div class=\"v-Message-body\">" +
                  email->html + "</div>\n<script src=\"/app/frame.js\"></script></body></html>\n",
              "default-src 'none'; script-src 'self'; style-src 'self' 'unsafe-inline'; img-src data:; "
              "base-uri 'none'; form-action 'none'");
}

void file(http::Exchange& exchange) {
  const auto name = exchange.pathBelow("/app/");
  const auto bytes = files::resource("webapp/" + name);
  if (!bytes) {
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
    return;
  }
  exchange.setHeader("Cache-Control", "no-cache");
  exchange.reply(SOUP_STATUS_OK, files::contentTypeOf(name), *bytes);
}

void download(http::Exchange& exchange) {
  const auto name = exchange.pathBelow("/download/");
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

// Afterwards to pages of the application only, never to another site.
void acceptSignIn(http::Exchange& exchange, const http::SignIn& signIn) {
  const auto next = exchange.formField("next").value_or("");
  const bool isOwn = (next.starts_with("/mail/") || next.starts_with("/settings/")) &&
                     next.find_first_of("\r\n\\") == std::string::npos;
  signIn.giveCookie(exchange);
  exchange.redirect(isOwn ? next : startPage);
}

// What takes its time, or is too large to be kept.
void sendPaced(http::Exchange& exchange, const mail::Blob& blob) {
  http::PacedBody body;
  body.size = blob.size();
  body.pause = blob.pause;
  if (blob.pause.count() > 0)
    body.piece = blob.size() / 40 + 1;
  body.bytes = [bytes = blob.bytes](std::size_t from, std::size_t length) {
    return bytes.empty() ? std::string(length, static_cast<char>('a' + from / length % 26))
                         : bytes.substr(from, length);
  };
  http::sendPaced(exchange.message(), blob.type.c_str(), std::move(body));
}

void userContent(http::Exchange& exchange, const mail::MailStore& store) {
  const bool isDownload = exchange.query("download").has_value();
  const auto [kind, rest] = http::split(exchange.pathBelow("/"));
  const auto id = http::split(rest).first;
  const auto* blob = kind == "blob" ? store.blob(id) : nullptr;
  const auto* email = kind == "source" ? store.email(id) : nullptr;
  if (blob && (blob->generated > 0 || blob->pause.count() > 0)) {
    exchange.nameFile(blob->name, isDownload);
    sendPaced(exchange, *blob);
  } else if (blob)
    exchange.replyFile(blob->bytes, blob->type.c_str(), blob->name, isDownload);
  else if (email)
    exchange.replyFile(mail::sourceOf(*email), "text/plain; charset=utf-8", email->id + ".eml", isDownload);
  else
    exchange.refuse(SOUP_STATUS_NOT_FOUND, "No such file.");
}

} // namespace

void addWebApp(http::Router& router, const mail::MailStore& store, http::SignIn& signIn,
               const std::string& announcement) {
  const auto add = [&](const char* path, http::Router::Handler handler) {
    router.add(http::Site::web, "GET", path, std::move(handler));
  };
  const auto showPage = [&signIn](http::Exchange& exchange) { page(exchange, signIn.isSignedIn(exchange)); };
  add("/mail/", showPage);
  add("/settings/", showPage);
  add("/mail/long", [&store, &signIn, showPage](http::Exchange& exchange) {
    signIn.isSignedIn(exchange) ? printView(exchange, store) : showPage(exchange);
  });
  add("/mail/body/", [&store, &signIn](http::Exchange& exchange) {
    messageBody(exchange, store, signIn.isSignedIn(exchange));
  });
  add("/mail", [](http::Exchange& exchange) { exchange.redirect(startPage); });
  add("/settings", [](http::Exchange& exchange) { exchange.redirect("/settings/general?u=demo"); });
  add("/", [&signIn](http::Exchange& exchange) {
    if (exchange.path() != "/")
      exchange.refuse(SOUP_STATUS_NOT_FOUND, "Not found.");
    else if (signIn.isSignedIn(exchange))
      exchange.redirect(startPage);
    else
      page(exchange, false);
  });
  add("/app/", file);
  add("/download/", download);
  add("/announcement.json", [&announcement](http::Exchange& exchange) {
    if (announcement.empty())
      exchange.refuse(SOUP_STATUS_NOT_FOUND, "Nothing to announce.");
    else
      exchange.reply(SOUP_STATUS_OK, "application/json", announcement);
  });
  add("/sign-out", [&signIn](http::Exchange& exchange) {
    signIn.signOut(exchange);
    exchange.redirect("/");
  });
  router.add(http::Site::web, "POST", "/sign-in",
             [&signIn](http::Exchange& exchange) { acceptSignIn(exchange, signIn); });
  router.add(http::Site::userContent, "GET", "/",
             [&store](http::Exchange& exchange) { userContent(exchange, store); });
}

} // namespace ondrel::demo::web
