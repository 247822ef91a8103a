#include "jmap/protocol/JMAPReading.h"

#include "base/Translation.h"

namespace ondrel::jmap {

base::JsonReader answer(const boost::json::value& reply, std::size_t index) {
  return base::JsonReader(reply)["methodResponses"][index][1];
}

base::JsonReader answeredList(const boost::json::value& reply, std::size_t index) {
  return answer(reply, index)["list"];
}

base::JsonReader firstListed(const boost::json::value& reply, std::size_t index) {
  return answeredList(reply, index)[0];
}

std::string senderText(const base::JsonReader& email) {
  const auto address = email["from"][0];
  for (const auto* key : {"name", "email"})
    if (auto text = address[key].string(); text && !text->empty())
      return *std::move(text);
  // TRANSLATORS: a sender without name and address
  return base::tr("Unknown");
}

} // namespace ondrel::jmap
