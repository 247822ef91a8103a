#pragma once

#include "async/Deadline.h"
#include "async/Scope.h"
#include "async/Signal.h"
#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/decoding/DecoderMessages.h"
#include "platform/linux/files/UniqueFd.h"
#include "platform/linux/glib/Ref.h"
#include "platform/linux/network/SocketPoller.h"

#include <gio/gio.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::platform::decoding {

using Answer = DecodeResult<std::vector<std::uint8_t>>;

// One run of ondrel-decoder on one file. It is killed when it takes longer than the limit for a request or
// says what was not agreed, from then on every answer is that error; and with this object. Main thread only.
class DecoderProcess {
 public:
  struct Options {
    std::string program; // the path of ondrel-decoder
    std::shared_ptr<network::SocketPoller> poller;
    async::Duration limit; // of a request, from its turn on
  };

  // The descriptor of the file is for reading.
  static DecodeResult<std::unique_ptr<DecoderProcess>> start(const Options& options, DocumentKind kind,
                                                             files::UniqueFd document);
  ~DecoderProcess();
  DecoderProcess(const DecoderProcess&) = delete;
  DecoderProcess& operator=(const DecoderProcess&) = delete;

  // The bytes after the header. Nothing when this object goes before. A request that nobody waits for when
  // its turn comes is left out.
  async::Future<Answer> ask(const Request& request);

 private:
  struct Job {
    Request request;
    async::Resolver<Answer> resolver;
  };

  DecoderProcess(const Options& options, glib::Ref<GSubprocess> process, files::UniqueFd socket);
  async::Task<void> work();
  async::Task<Answer> exchange(Request request);
  // The number of bytes that came; fewer when the decoder has ended.
  async::Task<std::size_t> read(std::uint8_t* buffer, std::size_t count);

  const std::shared_ptr<network::SocketPoller> poller_;
  const async::Duration limit_;
  const glib::Ref<GSubprocess> process_;
  const files::UniqueFd socket_;
  std::deque<Job> jobs_;
  std::optional<DecodeError> failure_;
  async::Signal hasJobs_;
  async::Scope scope_;
};

} // namespace ondrel::platform::decoding
