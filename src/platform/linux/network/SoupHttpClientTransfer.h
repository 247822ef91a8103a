#pragma once

#include "async/Task.h"
#include "platform/HttpClient.h"
#include "platform/linux/glib/Ref.h"

#include <libsoup/soup.h>

#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform::network {

// One request and its response, from the head to the end of the body; redirects are responses like others.
// Its end, or its death, ends the exchange: what was not read to the end takes its connection with it.
class SoupHttpClientTransfer {
 public:
  enum class Encoding { decoded, asSent };
  using Started = HttpResult<std::shared_ptr<SoupHttpClientTransfer>>;

  // Waits for the head of the response. The request must have been checked, and `address` be its own.
  // asSent also tells the server to compress nothing.
  static async::Task<Started> start(glib::Ref<SoupSession> session, HttpRequest request,
                                    glib::Owned<GUri> address, Encoding encoding);
  // The next bytes of the body, at most 64 KiB; empty at its end. One at a time.
  static async::Task<HttpResult<std::string>> read(std::shared_ptr<SoupHttpClientTransfer> self,
                                                   std::optional<async::Duration> limit);
  // Adds what else has arrived to what was just read, up to the same size, without waiting.
  void readArrived(std::string& bytes);
  // Whether there is something to read now.
  bool hasMore() const;

  SoupHttpClientTransfer(glib::Ref<SoupMessage> message, glib::Ref<GInputStream> body);
  ~SoupHttpClientTransfer() { end(); }

  int status() const;
  HttpHeaders headers() const;
  // The length of the body, where the head tells it.
  std::optional<goffset> announcedLength() const;
  void end();

 private:
  GPollableInputStream* pollableBody() const; // null where it can't be asked

  glib::Ref<SoupMessage> message_;
  glib::Ref<GInputStream> body_;
  glib::Ref<GCancellable> reading_;
  std::optional<WebError> failure_; // for the next to read
  goffset received_ = 0;
};

} // namespace ondrel::platform::network
