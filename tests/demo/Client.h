#pragma once

#include "demo/GLibPointers.h"

#include <libsoup/soup.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace ondrel::demo {

// What came back for one request. `error` is set when the connection gave no answer.
struct Answer {
  unsigned status = 0;
  std::map<std::string, std::string> headers; // names in lower case
  std::string body;
  std::string error;
};

struct Request {
  std::string url;
  std::string method = "GET";
  std::map<std::string, std::string> headers = {};
  std::string body = {};
};

// A request under way, on a connection of its own. Redirects are answers here, not followed.
class Call {
 public:
  explicit Call(const Request& request);
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  bool isDone() const { return isDone_; }
  // Runs the main loop until the answer is there.
  const Answer& wait();

 private:
  static void finish(GObject* session, GAsyncResult* result, gpointer self);

  ObjectPtr<SoupSession> session_;
  ObjectPtr<SoupMessage> message_;
  Answer answer_;
  bool isDone_ = false;
};

inline Answer fetch(const Request& request) {
  return Call(request).wait();
}

} // namespace ondrel::demo
