#pragma once

#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/decoding/DecoderProcess.h"

#include <chrono>
#include <cstdint>

namespace ondrel::platform::decoding {

// Decodes in a run of ondrel-decoder for each document, which is shut off from everything but the one file.
class ChildDecoder final : public DocumentDecoder {
 public:
  // The path of ondrel-decoder. `limit` is how long a request may take.
  explicit ChildDecoder(std::string program, async::Duration limit = std::chrono::seconds(10));

  async::Task<DecodeResult<PicturePointer>> thumbnail(std::string data, DocumentKind kind, int side) override;
  // Links are followed. What is no regular file, or is longer than `longestFile`, is an error.
  async::Task<DecodeResult<std::unique_ptr<DecodedDocument>>> open(std::string path,
                                                                   DocumentKind kind) override;

  static constexpr std::int64_t longestFile = std::int64_t{512} << 20; // bytes

 private:
  const DecoderProcess::Options options_;
};

} // namespace ondrel::platform::decoding
