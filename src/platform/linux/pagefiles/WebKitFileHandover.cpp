#include "platform/linux/pagefiles/WebKitFileHandover.h"

#include "async/Deadline.h"
#include "base/Json.h"
#include "base/JsonReader.h"
#include "platform/Deadlines.h"
#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/pagefiles/WebKitFileScript.h"
#include "platform/linux/text/PageJson.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value_from.hpp>

#include <chrono>

namespace ondrel::platform::pagefiles {

namespace {

using glib::CString;
using Answer = WebKitFileHandover::Answer;
using namespace std::chrono_literals;

constexpr auto hoverDeadline = 1s;

std::optional<Answer> answerFrom(JSCValue* value) {
  const CString json(value ? jsc_value_to_json(value, 0) : nullptr);
  const auto parsed = json ? text::parsePageJson(json.get()) : std::nullopt;
  const auto reader = parsed ? base::JsonReader(*parsed) : base::JsonReader();
  if (!reader.object())
    return std::nullopt;
  Answer answer;
  answer.accepted = reader["accepted"].boolean().value_or(false);
  for (const auto& element : reader["lost"].elements())
    if (const auto index = element.integer(); index && *index >= 0)
      answer.lost.push_back(static_cast<std::size_t>(*index));
  return answer;
}

async::Task<std::optional<Answer>> call(glib::Ref<WebKitWebView> view, std::string request) {
  GVariantDict arguments;
  g_variant_dict_init(&arguments, nullptr);
  g_variant_dict_insert(&arguments, "request", "s", request.c_str());
  auto [pending, future] = glib::startAsync();
  webkit_web_view_call_async_javascript_function(view.get(), fileScript, -1, g_variant_dict_end(&arguments),
                                                 fileScriptWorld, nullptr, pending.cancellable,
                                                 glib::PendingCall::callback, pending.userData);
  const auto result = co_await std::move(future);
  if (!result)
    co_return std::nullopt;
  glib::Error error;
  const auto value = glib::adopt(
      webkit_web_view_call_async_javascript_function_finish(view.get(), result->get(), error.out()));
  co_return answerFrom(value.get());
}

} // namespace

struct WebKitFileHandover::Call {
  const char* task;
  ViewPoint place{};
  std::vector<std::string> types{};
  std::string token{};
  std::vector<std::string> names{};
  std::vector<std::uint64_t> sizes{};
  std::vector<std::int64_t> times{}; // milliseconds since 1970
  std::string picture{};
  async::Duration deadline = evaluationDeadline;
};

async::Task<std::optional<Answer>> WebKitFileHandover::run(Call what) {
  const auto zoom = webkit_web_view_get_zoom_level(view_);
  const boost::json::object request{{"task", what.task},
                                    {"x", what.place.x / zoom},
                                    {"y", what.place.y / zoom},
                                    {"token", what.token},
                                    {"types", boost::json::value_from(what.types)},
                                    {"names", boost::json::value_from(what.names)},
                                    {"sizes", boost::json::value_from(what.sizes)},
                                    {"times", boost::json::value_from(what.times)},
                                    {"picture", what.picture}};
  auto text = base::jsonText(request);
  auto answer = co_await async::withDeadline(what.deadline, call(glib::share(view_), std::move(text)));
  co_return answer ? std::move(*answer) : std::nullopt;
}

async::Task<std::optional<bool>> WebKitFileHandover::over(ViewPoint place, std::vector<std::string> types) {
  const auto answer =
      co_await run({.task = "over", .place = place, .types = std::move(types), .deadline = hoverDeadline});
  co_return answer ? std::optional(answer->accepted) : std::nullopt;
}

async::Task<void> WebKitFileHandover::leave() {
  co_await run({.task = "leave", .deadline = hoverDeadline});
}

async::Task<std::optional<Answer>> WebKitFileHandover::hand(Call what, std::vector<PageFile> files) {
  const CString unique(g_uuid_string_random());
  what.token = std::string("application/x-ondrel-") + unique.get();
  std::vector<std::string> paths;
  for (const auto& file : files) {
    // Without a link the engine gets the file itself, which serves for most names.
    paths.push_back(links_.linkTo(file.path).value_or(file.path));
    what.names.push_back(file.name);
    what.types.push_back(file.type);
    what.sizes.push_back(file.size);
    what.times.push_back(file.modified);
  }
  const auto token = what.token;
  open_.emplace(token, std::move(paths));
  auto answer = co_await run(std::move(what));
  open_.erase(token);
  co_return std::move(answer);
}

async::Task<std::optional<Answer>> WebKitFileHandover::drop(std::vector<PageFile> files, ViewPoint place) {
  return hand({.task = "drop", .place = place}, std::move(files));
}

async::Task<std::optional<Answer>> WebKitFileHandover::paste(std::vector<PageFile> files) {
  return hand({.task = "paste"}, std::move(files));
}

async::Task<std::optional<Answer>> WebKitFileHandover::paste(PagePicture picture) {
  const CString encoded(
      g_base64_encode(reinterpret_cast<const guchar*>(picture.content.data()), picture.content.size()));
  const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  // The name that browsers give to it.
  return run({.task = "paste",
              .types = {picture.type},
              .names = {"image." + picture.type.substr(picture.type.find('/') + 1)},
              .sizes = {picture.content.size()},
              .times = {now.count()},
              .picture = encoded.get()});
}

bool WebKitFileHandover::answers(WebKitFileChooserRequest* request) {
  const auto* types = webkit_file_chooser_request_get_mime_types(request);
  const auto found = types && *types ? open_.find(*types) : open_.end();
  if (found == open_.end())
    return false;
  std::vector<const char*> paths;
  for (const auto& path : found->second)
    paths.push_back(path.c_str());
  paths.push_back(nullptr);
  webkit_file_chooser_request_select_files(request, paths.data());
  open_.erase(found);
  return true;
}

} // namespace ondrel::platform::pagefiles
