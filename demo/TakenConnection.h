#pragma once

#include "demo/GLibPointers.h"

#include <libsoup/soup.h>

#include <functional>
#include <string>
#include <string_view>

namespace ondrel::demo {

// The connection of one request, taken away from the HTTP server: what is sent goes out at once and as it
// is, the head of the answer included. Closes when it dies.
class TakenConnection {
 public:
  explicit TakenConnection(SoupServerMessage* message);
  ~TakenConnection();
  TakenConnection(const TakenConnection&) = delete;
  TakenConnection& operator=(const TakenConnection&) = delete;

  // Called once, when the other side has gone or all was sent after `finish`; the connection may be
  // destroyed in it.
  void onClosed(std::function<void()> callback) { closed_ = std::move(callback); }
  void send(std::string_view bytes);
  // Closes when all has been sent.
  void finish();
  // Makes the end, when it comes, a reset instead of an orderly close.
  void resetAtEnd();

 private:
  void write();
  void close();
  gboolean readable();
  void watchWritable(bool isWanted);

  ObjectPtr<GSocket> socket_;
  ObjectPtr<GIOStream> stream_;
  std::function<void()> closed_;
  std::string unsent_;
  GSource* reader_ = nullptr;
  GSource* writer_ = nullptr;
  bool isFinishing_ = false;
};

} // namespace ondrel::demo
