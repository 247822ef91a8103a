#pragma once

#include "base/Base64.h"
#include "base/Event.h"
#include "base/Reply.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ondrel::platform {

// A running download of the engine. Lives until it has finished or failed and the last holder lets go.
class Download {
 public:
  struct DestinationRequest {
    std::string suggestedFileName; // from the server: hostile until cleaned
    std::optional<std::string> mimeType;
  };
  struct Progress {
    double fractionCompleted = 0;
    std::int64_t bytesWritten = 0;
    std::int64_t totalBytes = -1; // -1: not known
  };

  // Answered with an absolute path, or with nothing to cancel the download. Set by whom the download is
  // handed to, before it returns; without a handler the download is cancelled.
  using DestinationReply = base::Reply<std::optional<std::string>>;
  using DestinationHandler = std::function<void(DestinationRequest, DestinationReply)>;

  virtual ~Download() = default;
  virtual void setDestinationHandler(DestinationHandler handler) = 0;
  // What it is called while it has no place: by the server or in its address, hostile until cleaned.
  virtual std::string suggestedFileName() const = 0;
  virtual Progress progress() const = 0;
  // No file comes any more. Tells that it has failed, on a later turn.
  virtual void cancel() = 0;

  base::Event<> progressed;
  base::Event<> finished;
  base::Event<const std::string&> failed; // a sentence for the user; also after cancel()
};

} // namespace ondrel::platform
