// The other half of WebKitView: what the engine tells and asks.
#include "platform/linux/webkit/WebKitView.h"

#include "platform/linux/network/WebErrors.h"
#include "platform/linux/pagefiles/WebKitFileDownload.h"
#include "platform/linux/text/SafeText.h"
#include "platform/linux/webkit/WebKitDialogs.h"
#include "platform/linux/webkit/WebKitEngine.h"
#include "platform/linux/webkit/WebKitMessages.h"
#include "platform/linux/webkit/WebKitPolicies.h"
#include "platform/linux/webkit/WebKitScriptMessages.h"

namespace ondrel::platform::webkit {

template <class Signature, class Handler>
void WebKitView::on(const char* signal, Handler handler) {
  connections_.push_back(glib::connect<Signature>(view_.get(), signal, std::move(handler)));
}

template <class Call>
void WebKitView::tell(Call call) {
  const auto self = shared_from_this();
  if (delegate_)
    call(*delegate_);
}

void WebKitView::connectLoads() {
  on<void(WebKitWebView*, WebKitLoadEvent)>("load-changed", [this](WebKitWebView*, WebKitLoadEvent event) {
    const auto self = shared_from_this();
    switch (event) {
    case WEBKIT_LOAD_STARTED:
      stayed_ = false;
      loads_.started();
      return;
    case WEBKIT_LOAD_REDIRECTED:
      return;
    case WEBKIT_LOAD_COMMITTED:
      background_.documentBegan();
      sendExtraScripts(); // again, since this may be a new web process
      wantedItem_ = nullptr;
      loads_.committed(url().value_or(std::string()));
      return;
    case WEBKIT_LOAD_FINISHED:
      loads_.finished();
      return;
    }
  });
  on<gboolean(WebKitWebView*, WebKitLoadEvent, const char*, GError*)>(
      "load-failed",
      [this](WebKitWebView*, WebKitLoadEvent event, const char* url, GError* gError) -> gboolean {
        const auto self = shared_from_this();
        const bool provisional = event != WEBKIT_LOAD_COMMITTED;
        auto error = network::webErrorFrom(*gError);
        error.failingURL = text::validUtf8(url ? url : "");
        rememberWantedItem(error.failingURL);
        // Where a server redirects to the empty page, the engine shows one and then says that it couldn't.
        if (provisional || error.failingURL != "about:blank")
          loads_.failed(error, provisional);
        return TRUE; // no error page of the engine's
      });
  on<void(WebKitWebView*, WebKitWebProcessTerminationReason)>(
      "web-process-terminated", [this](WebKitWebView*, WebKitWebProcessTerminationReason reason) {
        loads_.abandoned();
        heldUntilShown_.reset();
        tell([reason](WebViewDelegate& delegate) {
          delegate.webProcessDidTerminate(reason != WEBKIT_WEB_PROCESS_TERMINATED_BY_API);
        });
      });
}

void WebKitView::loadCommitted() {
  tell([](WebViewDelegate& delegate) { delegate.didCommit(); });
}

void WebKitView::loadFinished() {
  tell([](WebViewDelegate& delegate) { delegate.didFinish(); });
}

void WebKitView::loadFailed(const WebError& error, bool provisional) {
  tell([&](WebViewDelegate& delegate) {
    if (provisional)
      delegate.didFailProvisional(error);
    else
      delegate.didFail(error);
  });
}

void WebKitView::loadTimedOut(const WebError& error) {
  const auto self = shared_from_this();
  webkit_web_view_stop_loading(view_.get());
  loadFailed(error, true);
}

void WebKitView::connectQuestions() {
  on<gboolean(WebKitWebView*, WebKitPolicyDecision*, WebKitPolicyDecisionType)>(
      "decide-policy",
      [this](WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) -> gboolean {
        sendExtraScripts(); // before the answer, so that they are there when the new document begins
        if (!delegate_)
          return FALSE; // the engine's own decision; a new window may have no delegate yet
        tell([&](WebViewDelegate& delegate) {
          askForPolicy(delegate, decision, type, presses_.count(), [weak = weak_from_this()] {
            if (const auto self = weak.lock())
              self->loads_.refusedByPolicy();
          });
        });
        return TRUE;
      });
  on<GtkWidget*(WebKitWebView*, WebKitNavigationAction*)>(
      "create", [this](WebKitWebView*, WebKitNavigationAction* action) -> GtkWidget* {
        const auto self = shared_from_this();
        auto* view = openWindow(action);
        return view ? GTK_WIDGET(view) : nullptr;
      });
  on<void(WebKitWebView*)>("ready-to-show", [this](WebKitWebView*) {
    const auto self = shared_from_this();
    heldUntilShown_.reset();
  });
  on<void(WebKitWebView*)>("close", [this](WebKitWebView*) {
    const auto self = shared_from_this();
    if (closing_.takeClose())
      return;
    heldUntilShown_.reset();
    tell([](WebViewDelegate& delegate) { delegate.didClose(); });
  });
  on<gboolean(WebKitWebView*, WebKitScriptDialog*)>(
      "script-dialog", [this](WebKitWebView*, WebKitScriptDialog* dialog) -> gboolean {
        showDialog(dialog);
        return TRUE;
      });
  on<gboolean(WebKitWebView*, WebKitFileChooserRequest*)>(
      "run-file-chooser", [this](WebKitWebView*, WebKitFileChooserRequest* request) -> gboolean {
        if (pageFiles_ && pageFiles_->answers(request))
          return TRUE;
        if (!delegate_)
          webkit_file_chooser_request_cancel(request);
        tell([&](WebViewDelegate& delegate) { showFileChooser(delegate, request); });
        return TRUE;
      });
  // Camera, microphone, location, notifications and whatever else pages may ask for.
  on<gboolean(WebKitWebView*, WebKitPermissionRequest*)>(
      "permission-request", [](WebKitWebView*, WebKitPermissionRequest* request) -> gboolean {
        webkit_permission_request_deny(request);
        return TRUE;
      });
  on<gboolean(WebKitWebView*, WebKitPermissionStateQuery*)>(
      "query-permission-state", [](WebKitWebView*, WebKitPermissionStateQuery* query) -> gboolean {
        webkit_permission_state_query_finish(query, WEBKIT_PERMISSION_STATE_DENIED);
        return TRUE;
      });
  // A page's own call of print() would run the engine's dialog with a main loop inside.
  on<gboolean(WebKitWebView*, WebKitPrintOperation*)>(
      "print", [](WebKitWebView*, WebKitPrintOperation*) -> gboolean { return TRUE; });
  on<gboolean(WebKitWebView*, WebKitUserMessage*)>(
      "user-message-received", [this](WebKitWebView*, WebKitUserMessage* message) -> gboolean {
        receive(message);
        return TRUE;
      });
}

void WebKitView::showDialog(WebKitScriptDialog* dialog) {
  if (webkit_script_dialog_get_dialog_type(dialog) != WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
    if (!delegate_)
      dismissScriptDialog(dialog);
    tell([&](WebViewDelegate& delegate) { showScriptDialog(delegate, dialog); });
    return;
  }
  auto reply = leaveReplyTo(dialog);
  if (closing_.takeQuestion(reply))
    return;
  loads_.heldUp();
  DoneReply answer(
      [weak = weak_from_this(), inner = std::move(reply)](bool leave) mutable {
        if (const auto self = weak.lock()) {
          self->stayed_ = !leave;
          self->loads_.released(leave);
        }
        std::move(inner)(leave);
      },
      false);
  tell([&](WebViewDelegate& delegate) { delegate.runBeforeUnloadPanel(std::move(answer)); });
}

void WebKitView::connectProperties() {
  connections_.push_back(glib::onNotify(
      view_.get(), "uri", [this] { tell([](WebViewDelegate& delegate) { delegate.urlDidChange(); }); }));
  connections_.push_back(glib::onNotify(view_.get(), "is-loading", [this] {
    const auto self = shared_from_this();
    loads_.loadingChanged(webkit_web_view_is_loading(view_.get()) != FALSE);
  }));
  for (const char* property : {"is-loading", "estimated-load-progress"})
    connections_.push_back(glib::onNotify(view_.get(), property, [this] {
      tell([](WebViewDelegate& delegate) { delegate.loadingDidChange(); });
    }));
  connections_.push_back(glib::onNotify(
      view_.get(), "title", [this] { tell([](WebViewDelegate& delegate) { delegate.titleDidChange(); }); }));
  connections_.push_back(glib::onNotify(view_.get(), "is-web-process-responsive", [this] {
    tell([](WebViewDelegate& delegate) { delegate.responsivenessDidChange(); });
  }));
  connections_.push_back(glib::connect<void(WebKitBackForwardList*, WebKitBackForwardListItem*, gpointer)>(
      webkit_web_view_get_back_forward_list(view_.get()), "changed",
      [this](WebKitBackForwardList*, WebKitBackForwardListItem*, gpointer) {
        tell([](WebViewDelegate& delegate) { delegate.backForwardListDidChange(); });
      }));
}

void WebKitView::takeFiles() {
  pageFiles_ = std::make_unique<pagefiles::WebKitPageFiles>(
      view_.get(), container_.get(), [this](const std::string& text) {
        tell([&](WebViewDelegate& delegate) { delegate.didRefuseFiles(text); });
      });
  on<gboolean(WebKitWebView*, WebKitContextMenu*, WebKitHitTestResult*)>(
      "context-menu", [this](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult* hit) -> gboolean {
        const auto self = shared_from_this();
        const bool isEmpty = !fillMenu(menu, contextHitFrom(hit));
        pageFiles_->willShowMenu(menu);
        return isEmpty;
      });
  menuKey_ = std::make_unique<WebKitMenuKey>(
      view_.get(), container_.get(),
      WebKitMenuKey::Handlers{
          .rows =
              [this](const ContextHit& hit) {
                return delegate_ ? delegate_->contextMenu(hit) : ContextMenu();
              },
          .choose =
              [this](const MenuRow& row, const ContextHit& hit) {
                const auto self = shared_from_this();
                choose(row, hit);
              },
          .pasteFiles = [this] { return pageFiles_->pasteFromClipboard(); },
      });
}

bool WebKitView::fillMenu(WebKitContextMenu* menu, const ContextHit& hit) {
  const auto rows = delegate_ ? delegate_->contextMenu(hit) : ContextMenu();
  return menu_.fill(menu, rows, [this, hit](const MenuRow& row) { choose(row, hit); });
}

void WebKitView::choose(const MenuRow& row, const ContextHit& hit) {
  const auto gesture = presses_.addChoice();
  if (row.action == MenuAction::copyText)
    gdk_clipboard_set_text(gtk_widget_get_clipboard(container_.get()), text::validUtf8(row.text).c_str());
  else if (row.action == MenuAction::saveLink)
    // The engine tells of it as of each other download, and lets go of it with its end.
    g_object_unref(webkit_web_view_download_uri(view_.get(), hit.linkURL.c_str()));
  else
    tell([&](WebViewDelegate& delegate) { delegate.didChoose(row.action, hit, gesture); });
}

void WebKitView::limitMenu() {
  on<gboolean(WebKitWebView*, WebKitContextMenu*, WebKitHitTestResult*)>(
      "context-menu", [](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult*) -> gboolean {
        // All else opens, loads or saves something.
        for (guint i = webkit_context_menu_get_n_items(menu); i-- > 0;) {
          auto* item = webkit_context_menu_get_item_at_position(menu, static_cast<int>(i));
          const auto action = webkit_context_menu_item_get_stock_action(item);
          if (action != WEBKIT_CONTEXT_MENU_ACTION_COPY && action != WEBKIT_CONTEXT_MENU_ACTION_SELECT_ALL &&
              action != WEBKIT_CONTEXT_MENU_ACTION_COPY_LINK_TO_CLIPBOARD)
            webkit_context_menu_remove(menu, item);
        }
        return webkit_context_menu_get_n_items(menu) == 0;
      });
}

void WebKitView::sendExtraScripts() {
  if (extraScripts_.empty())
    return;
  GVariantBuilder scripts;
  g_variant_builder_init(&scripts, G_VARIANT_TYPE(webkit::userScriptsFormat));
  for (const auto& script : extraScripts_)
    g_variant_builder_add(&scripts, "(sbb)", script->source.c_str(),
                          gboolean{script->time == InjectionTime::documentStart},
                          gboolean{script->mainFrameOnly});
  webkit_web_view_send_message_to_page(
      view_.get(), webkit_user_message_new(webkit::userScripts, g_variant_builder_end(&scripts)), nullptr,
      nullptr, nullptr);
}

WebKitWebView* WebKitView::openWindow(WebKitNavigationAction* action) {
  if (!delegate_)
    return nullptr;
  std::shared_ptr<WebKitView> made;
  NewWindowRequest request;
  request.action = navigationActionFrom(action, presses_.count());
  request.followsUser = request.action.isUserGesture || presses_.isRecent();
  request.makeWebView = [this, &made](Scripts scripts) -> std::shared_ptr<WebView> {
    made = makePopup(scripts);
    return made;
  };
  const auto answer = delegate_->createWebView(std::move(request));
  if (!answer || answer != made)
    return nullptr;
  made->heldUntilShown_ = made;
  // Without a reference of its own, whatever the signal's signature says: the engine keeps one
  // (measured, 2.50).
  return made->view_.get();
}

void WebKitView::receive(WebKitUserMessage* message) {
  if (isQuestionToGoOn(message)) {
    messagePacing_.answerWithTime(message);
    return;
  }
  const std::string_view name(webkit_user_message_get_name(message));
  if (name == webkit::historyTooLarge) {
    keepsHistory_ = false;
    return;
  }
  if (name == webkit::pageWantsWhite) {
    background_.pageWantsWhite();
    return;
  }
  auto received = scriptMessageFrom(message);
  if (!received || !handlerNames_.contains(received->name))
    return;
  received->webView = weak_from_this();
  tell([&](WebViewDelegate& delegate) { delegate.didReceiveScriptMessage(*received); });
}

void WebKitView::didStartDownload(WebKitDownload* download) {
  if (!delegate_) {
    webkit_download_cancel(download);
    return;
  }
  tell([&](WebViewDelegate& delegate) {
    delegate.didBecomeDownload(pagefiles::WebKitFileDownload::make(download, engine_->willEnd));
  });
}

} // namespace ondrel::platform::webkit
