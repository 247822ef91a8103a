#include "demo/ClientPreferences.h"

#include "demo/GetAnswer.h"

namespace ondrel::demo {

MethodResult clientPreferencesGet(const JmapContext& context, Arguments& arguments) {
  const GetAnswer answer(arguments, userAccountId, {"id", "inLabelsMode"});
  if (const auto error = arguments.error())
    return std::unexpected(*error);
  return answer.of({"singleton"}, context.isInLabelsMode ? "labels" : "folders", [&](const std::string& id) {
    return id == "singleton"
               ? std::optional(boost::json::object{{"id", id}, {"inLabelsMode", context.isInLabelsMode}})
               : std::nullopt;
  });
}

} // namespace ondrel::demo
