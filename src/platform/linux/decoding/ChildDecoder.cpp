#include "platform/linux/decoding/ChildDecoder.h"

#include "async/sleep.h"
#include "platform/linux/decoding/ChildDocument.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>

namespace ondrel::platform::decoding {

namespace {

using Kind = DecodeError::Kind;
using Opened = DecodeResult<std::unique_ptr<DecodedDocument>>;

constexpr std::size_t pieceSize = std::size_t{4} << 20;

std::unexpected<DecodeError> failed(Kind kind, const char* what) {
  return std::unexpected(DecodeError{kind, fmt::format("{}: {}", what, std::strerror(errno))});
}
std::unexpected<DecodeError> tooLong() {
  return std::unexpected(DecodeError{Kind::tooLarge, "the file is too long to decode"});
}

DecodeResult<files::UniqueFd> openFile(const std::string& path) {
  // A pipe of that name would otherwise hold up the program.
  files::UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status{};
  if (!file || fstat(file.get(), &status) != 0)
    return failed(Kind::unavailable, "can't open the file");
  if (!S_ISREG(status.st_mode))
    return std::unexpected(DecodeError{Kind::unavailable, "it is no regular file"});
  if (status.st_size > ChildDecoder::longestFile)
    return tooLong();
  return file;
}

// A file without a name that nobody can change. Written in pieces, so that a long one holds up nothing.
async::Task<DecodeResult<files::UniqueFd>> memoryFile(std::string data) {
  files::UniqueFd file(memfd_create("document", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  std::string_view rest = data;
  while (file && !rest.empty()) {
    const auto written = write(file.get(), rest.data(), std::min(rest.size(), pieceSize));
    if (written < 0 && errno != EINTR)
      co_return failed(Kind::unavailable, "can't hand over the data");
    rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    co_await async::nextTurn();
  }
  if (!file || fcntl(file.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0)
    co_return failed(Kind::unavailable, "can't hand over the data");
  co_return std::move(file);
}

async::Task<Opened> openMemory(DecoderProcess::Options options, std::string data, DocumentKind kind) {
  if (data.size() > static_cast<std::size_t>(ChildDecoder::longestFile))
    co_return tooLong();
  auto file = co_await memoryFile(std::move(data));
  if (!file)
    co_return std::unexpected(file.error());
  auto document = co_await ChildDocument::open(std::move(options), kind, std::move(*file));
  co_return document;
}

async::Task<Opened> openPath(DecoderProcess::Options options, std::string path, DocumentKind kind) {
  auto file = openFile(path);
  if (!file)
    co_return std::unexpected(file.error());
  auto document = co_await ChildDocument::open(std::move(options), kind, std::move(*file));
  co_return document;
}

int fitted(double length, double longest, int side) {
  return std::clamp(static_cast<int>(std::lround(length * std::min(1.0, side / longest))), 1, side);
}

async::Task<DecodeResult<PicturePointer>> drawThumbnail(DecoderProcess::Options options, std::string data,
                                                        DocumentKind kind, int side) {
  const auto document = co_await openMemory(std::move(options), std::move(data), kind);
  if (!document)
    co_return std::unexpected(document.error());
  const auto width = (*document)->pageWidth(0);
  const auto height = (*document)->pageHeight(0);
  const auto longest = std::max(width, height);
  auto picture = co_await (*document)->render(0, fitted(width, longest, side), fitted(height, longest, side));
  co_return picture;
}

} // namespace

ChildDecoder::ChildDecoder(std::string program, async::Duration limit)
    : options_{std::move(program), network::SocketPoller::make(), limit} {
}

async::Task<DecodeResult<PicturePointer>> ChildDecoder::thumbnail(std::string data, DocumentKind kind,
                                                                  int side) {
  return drawThumbnail(options_, std::move(data), kind, side);
}

async::Task<Opened> ChildDecoder::open(std::string path, DocumentKind kind) {
  return openPath(options_, std::move(path), kind);
}

} // namespace ondrel::platform::decoding
