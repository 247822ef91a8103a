#include "webext/PageBridge.h"

#include "platform/linux/webkit/WebKitMessages.h"
#include "webext/Evaluation.h"
#include "webext/FrameIdentity.h"
#include "webext/HandlerObject.h"
#include "webext/HistoryLimits.h"
#include "webext/PageBackground.h"
#include "webext/ScriptText.h"

#include <utility>

namespace ondrel::webext {

namespace messages = platform::webkit;

namespace {
constexpr const char* bridgeKey = "ondrel-page-bridge";
// Bytes of history states. A list of as many small ones as the engine keeps is no burden.
constexpr std::uint64_t smallState = 4 << 10;
constexpr std::uint64_t largestHistory = 1 << 20;
} // namespace

// Data of one postMessage function. Owned by the function, which scripts may keep longer than anything else
// lives.
struct PageBridge::Handler {
  glib::WeakRef<WebKitWebPage> page;
  std::uint64_t frame;
  std::uint64_t document;
  std::string name;
};

void PageBridge::attach(WebKitWebPage* page, std::shared_ptr<const BridgeSettings> settings) {
  g_object_set_data_full(G_OBJECT(page), bridgeKey, new PageBridge(page, std::move(settings)),
                         [](gpointer bridge) { delete static_cast<PageBridge*>(bridge); });
}

PageBridge* PageBridge::of(WebKitWebPage* page) {
  return static_cast<PageBridge*>(g_object_get_data(G_OBJECT(page), bridgeKey));
}

PageBridge::PageBridge(WebKitWebPage* page, std::shared_ptr<const BridgeSettings> settings)
    : page_(page), settings_(std::move(settings)), flow_(settings_->extension, page),
      received_(glib::connect<gboolean(WebKitWebPage*, WebKitUserMessage*)>(
          page, "user-message-received",
          [this](WebKitWebPage*, WebKitUserMessage* message) { return receive(message); })),
      documentRead_(glib::connect<void(WebKitWebPage*)>(
          page, "document-loaded", [this](WebKitWebPage*) { watchBackgroundOfPage(); })) {
}

void PageBridge::watchBackgroundOfPage() {
  const auto frame = mainFrame_.lock();
  if (!frame)
    return;
  watchBackground(frame.get(), [page = std::make_shared<glib::WeakRef<WebKitWebPage>>(page_)] {
    const auto locked = page->lock();
    if (auto* bridge = locked ? of(locked.get()) : nullptr; bridge && bridge->flow_.isOpen())
      bridge->flow_.note(messages::pageWantsWhite, nullptr);
  });
}

gboolean PageBridge::receive(WebKitUserMessage* message) {
  const std::string_view name(webkit_user_message_get_name(message));
  if (name == messages::evaluate)
    evaluate(message);
  else if (name == messages::userScripts)
    takeUserScripts(message);
  else
    return FALSE;
  return TRUE;
}

void PageBridge::forgetDeadFrames() {
  std::erase_if(frames_, [](const auto& entry) { return !entry.second.object.lock(); });
}

glib::Ref<WebKitFrame> PageBridge::frame(std::uint64_t id) const {
  const auto found = frames_.find(id);
  return found == frames_.end() ? nullptr : found->second.object.lock();
}

void PageBridge::documentBegan(WebKitFrame* frame) {
  forgetDeadFrames();
  const auto id = webkit_frame_get_id(frame);
  auto& entry = frames_[id];
  entry.object.set(frame);
  entry.document = ++lastDocument_;
  if (webkit_frame_is_main_frame(frame))
    mainFrame_.set(frame);
  numberDocument(frame, entry.document);
  flow_.documentBegan(id, webkit_frame_is_main_frame(frame) != FALSE);

  const auto context = glib::adopt(webkit_frame_get_js_context(frame));
  limitHistory(context.get(),
               [page = std::make_shared<glib::WeakRef<WebKitWebPage>>(page_)](std::uint64_t bytes) {
                 const auto locked = page->lock();
                 if (auto* bridge = locked ? of(locked.get()) : nullptr)
                   bridge->historyGrew(bytes);
               });
  for (const auto& name : settings_->handlerNames) {
    auto* handler = new Handler{glib::WeakRef<WebKitWebPage>(page_), id, entry.document, name};
    const auto function = glib::adopt(jsc_value_new_function(
        context.get(), "postMessage", G_CALLBACK(+[](JSCValue* body, Handler* called) -> gboolean {
          const auto page = called->page.lock();
          auto* bridge = page ? of(page.get()) : nullptr;
          return bridge && bridge->post(*called, body);
        }),
        handler, [](gpointer data) { delete static_cast<Handler*>(data); }, G_TYPE_BOOLEAN, 1,
        JSC_TYPE_VALUE));
    installHandler(context.get(), name, function.get());
  }
  arrangeUserScripts(frame, userScripts_);
}

void PageBridge::historyGrew(std::uint64_t bytes) {
  if (bytes <= smallState)
    return;
  historySize_ += bytes;
  if (historySize_ > largestHistory && flow_.isOpen() && !std::exchange(toldOfLargeHistory_, true))
    flow_.note(messages::historyTooLarge, nullptr);
}

void PageBridge::takeUserScripts(WebKitUserMessage* message) {
  auto* parameters = webkit_user_message_get_parameters(message);
  if (!userScripts_.empty() || !parameters ||
      !g_variant_is_of_type(parameters, G_VARIANT_TYPE(messages::userScriptsFormat)))
    return;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, parameters);
  const char* source = nullptr;
  gboolean atStart = FALSE;
  gboolean mainFrameOnly = FALSE;
  while (g_variant_iter_next(&iterator, "(&sbb)", &source, &atStart, &mainFrameOnly))
    userScripts_.push_back({source, atStart != FALSE, mainFrameOnly != FALSE});

  // For documents that were there before the scripts, but for the empty one that a window begins with.
  std::vector<glib::Ref<WebKitFrame>> frames;
  for (const auto& [id, entry] : frames_)
    frames.push_back(entry.object.lock());
  for (const auto& frame : frames) {
    if (frame && identityOf(frame.get()).url != "about:blank")
      arrangeUserScripts(frame.get(), userScripts_);
  }
}

bool PageBridge::post(const Handler& handler, JSCValue* body) {
  const auto sender = frame(handler.frame);
  if (!sender || !flow_.isOpen() || documentNumber(sender.get()) != handler.document)
    return false;
  // One that has come back: what the one after it has not got out by now is dropped.
  if (std::exchange(frames_.at(handler.frame).document, handler.document) != handler.document)
    flow_.documentBegan(handler.frame, webkit_frame_is_main_frame(sender.get()) != FALSE);
  // Before the body becomes JSON: that runs code of the page, which may take the frame away.
  const auto identity = identityOf(sender.get());
  const auto json = jsonText(body).value_or(std::string());
  if (json.size() > settings_->largestBody) {
    if (!std::exchange(toldOfLargeMessage_, true))
      flow_.note(messages::messageTooLarge,
                 g_variant_new(messages::messageTooLargeFormat, handler.name.c_str(), guint64{json.size()}));
    return false;
  }
  return flow_.post(identity.id, g_variant_new(messages::scriptMessageFormat, handler.name.c_str(),
                                               json.c_str(), guint64{identity.id}, identity.url.c_str(),
                                               identity.origin.c_str(), gboolean{identity.isMainFrame}));
}

void PageBridge::evaluate(WebKitUserMessage* message) {
  auto* parameters = webkit_user_message_get_parameters(message);
  if (!parameters || !g_variant_is_of_type(parameters, G_VARIANT_TYPE(messages::evaluateFormat)))
    return;
  guint64 id = 0;
  const char* origin = nullptr;
  const char* source = nullptr;
  g_variant_get(parameters, "(t&s&s)", &id, &origin, &source);

  Evaluation result{messages::Evaluated::frameGone, {}};
  // The script may end this page, and the bridge with it: nothing of it is touched afterwards.
  const auto request = glib::share(message);
  if (const auto target = frame(id); target && identityOf(target.get()).origin == origin)
    result = evaluateIn(target.get(), source);
  webkit_user_message_send_reply(
      request.get(),
      webkit_user_message_new(messages::evaluated,
                              g_variant_new(messages::evaluatedFormat, guint{std::to_underlying(result.kind)},
                                            result.text.c_str())));
}

} // namespace ondrel::webext
