#include "MailServer.h"

#include <boost/json.hpp>

#include <cstdlib>

namespace ondrel::bench {

namespace {

namespace json = boost::json;

constexpr auto patience = std::chrono::seconds(20);

constexpr std::string_view streamHead = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n"
                                        "Cache-Control: no-store\r\nConnection: close\r\n";

const json::object sessionResource{
    {"apiUrl", "/jmap/api/"},
    {"eventSourceUrl", "/jmap/event/?types={types}&closeafter={closeafter}&ping={ping}"},
    {"downloadUrl", "/jmap/download/{accountId}/{blobId}/{name}?type={type}"},
    {"primaryAccounts", {{"urn:ietf:params:jmap:mail", "u1"}}},
    {"state", "0"}};

void reply(SoupServerMessage* message, const json::object& body) {
  const auto text = json::serialize(body);
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
  soup_server_message_set_response(message, "application/json", SOUP_MEMORY_COPY, text.data(), text.size());
}

json::object requestBody(SoupServerMessage* message) {
  const auto* body = soup_server_message_get_request_body(message);
  return json::parse({body->data, static_cast<std::size_t>(body->length)}).as_object();
}

// Ids and states are numbers as text: the state is the number of messages, the ids go from 0.
std::size_t number(const json::value& text) {
  return std::strtoul(text.as_string().c_str(), nullptr, 10);
}

} // namespace

MailServer::MailServer(Coding coding)
    : coding_(coding), context_(g_main_context_new()), loop_(g_main_loop_new(context_, FALSE)) {
  thread_ = std::thread([this] { run(); });
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return port_ != 0; });
}

MailServer::~MailServer() {
  // Also when the loop has not begun yet.
  g_main_context_invoke(
      context_,
      [](gpointer loop) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop*>(loop));
        return G_SOURCE_REMOVE;
      },
      loop_);
  thread_.join();
  g_main_loop_unref(loop_);
  g_main_context_unref(context_);
}

void MailServer::run() {
  g_main_context_push_thread_default(context_);
  auto server = glib::adopt(soup_server_new(nullptr, nullptr));
  soup_server_add_handler(
      server.get(), nullptr,
      [](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
        static_cast<MailServer*>(self)->serve(message);
      },
      this, nullptr);
  if (!soup_server_listen_local(server.get(), 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr))
    fail("no port to listen on");
  auto* addresses = soup_server_get_uris(server.get());
  {
    const std::lock_guard lock(mutex_);
    port_ = static_cast<unsigned>(g_uri_get_port(static_cast<GUri*>(addresses->data)));
  }
  g_slist_free_full(addresses, [](gpointer address) { g_uri_unref(static_cast<GUri*>(address)); });
  changed_.notify_all();
  g_main_loop_run(loop_);
  soup_server_disconnect(server.get());
  server = nullptr;
  g_main_context_pop_thread_default(context_);
}

std::string MailServer::address() const {
  return fmt::format("http://127.0.0.1:{}/", port_);
}

void MailServer::waitForListener() {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, patience, [this] { return stream_.get() != nullptr; }))
    fail("nobody listens to the event stream");
}

void MailServer::serve(SoupServerMessage* message) {
  const auto arrival = Clock::now();
  const std::string path = g_uri_get_path(soup_server_message_get_uri(message));
  if (path == "/jmap/event/")
    openStream(message);
  else if (path == "/jmap/api/")
    answerCall(message, arrival);
  else
    reply(message, sessionResource);
}

void MailServer::answerCall(SoupServerMessage* message, Clock::time_point arrival) {
  const auto body = requestBody(message);
  const auto& call = body.at("methodCalls").as_array().at(0).as_array();
  const std::string method(call.at(0).as_string());
  const std::lock_guard lock(mutex_);
  json::array answer;
  answer.emplace_back(call.at(0));
  answer.emplace_back(arguments(method, call.at(1).as_object()));
  answer.emplace_back(call.at(2));
  json::array answers;
  answers.emplace_back(std::move(answer));
  reply(message, {{"methodResponses", std::move(answers)}, {"sessionState", "0"}});
  exchanges_.push_back({method, arrival, Clock::now()});
}

// With the mutex held, like email().
json::object MailServer::arguments(std::string_view method, const json::object& asked) const {
  const auto state = std::to_string(subjects_.size());
  json::array list;
  if (method == "Email/get") {
    for (const auto& id : asked.at("ids").as_array())
      list.emplace_back(email(id.as_string()));
  } else if (method == "Email/changes") {
    for (auto id = number(asked.at("sinceState")); id < subjects_.size(); ++id)
      list.emplace_back(std::to_string(id));
    return {{"accountId", "u1"},         {"oldState", asked.at("sinceState")}, {"newState", state},
            {"hasMoreChanges", false},   {"created", std::move(list)},         {"updated", json::array()},
            {"destroyed", json::array()}};
  } else if (method == "Mailbox/get") {
    list.emplace_back(
        json::object{{"id", "in"}, {"name", "Inbox"}, {"role", "inbox"}, {"unreadEmails", subjects_.size()}});
  } else {
    fail(fmt::format("an unexpected call of {}", method));
  }
  return {{"accountId", "u1"}, {"state", state}, {"list", std::move(list)}, {"notFound", json::array()}};
}

json::object MailServer::email(std::string_view id) const {
  json::array from;
  from.emplace_back(json::object{{"name", "Ann Example"}, {"email", "ann@example.org"}});
  return {{"id", id},
          {"subject", subjects_.at(number(json::value(id)))},
          {"from", std::move(from)},
          {"mailboxIds", {{"in", true}}}};
}

void MailServer::openStream(SoupServerMessage* message) {
  const auto kept = glib::share(message);
  const std::lock_guard lock(mutex_);
  listener_ = glib::share(soup_server_message_get_socket(message));
  stream_ = glib::adopt(soup_server_message_steal_connection(message));
  g_socket_set_blocking(listener_.get(), TRUE);
  const auto head =
      std::string(streamHead) + (coding_ == Coding::chunked ? "Transfer-Encoding: chunked\r\n\r\n" : "\r\n");
  g_socket_send(listener_.get(), head.data(), head.size(), nullptr, nullptr);
  changed_.notify_all();
}

Clock::time_point MailServer::deliver(const std::string& subject) {
  {
    const std::lock_guard lock(mutex_);
    subjects_.push_back(subject);
  }
  const auto line = coded("event: state\n" + eventLine() + "\n");
  const auto moment = Clock::now();
  write(line);
  return moment;
}

std::string MailServer::coded(std::string_view text) const {
  if (coding_ == Coding::none || text.empty())
    return std::string(text);
  return fmt::format("{:x}\r\n{}\r\n", text.size(), text);
}

void MailServer::write(std::string_view bytes) {
  const auto socket = [this] {
    const std::lock_guard lock(mutex_);
    return listener_;
  }();
  while (!bytes.empty()) {
    const auto sent = g_socket_send(socket.get(), bytes.data(), bytes.size(), nullptr, nullptr);
    if (sent <= 0)
      fail("the listener of the event stream has gone");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

std::string MailServer::eventLine() const {
  const std::lock_guard lock(mutex_);
  const auto state = std::to_string(subjects_.size());
  return fmt::format("data: {}\n", json::serialize(json::object{
                                       {"@type", "StateChange"},
                                       {"changed", {{"u1", {{"Mailbox", state}, {"Email", state}}}}}}));
}

std::vector<MailServer::Exchange> MailServer::exchanges() const {
  const std::lock_guard lock(mutex_);
  return exchanges_;
}

long MailServer::calls(std::string_view method) const {
  return std::ranges::count(exchanges(), method, &Exchange::method);
}

} // namespace ondrel::bench
