#include "platform/linux/files/GioFileReader.h"

#include "platform/linux/glib/AsyncResult.h"

#include <fmt/format.h>

namespace ondrel::platform::files {

namespace {

using glib::adopt;
using glib::Ref;

constexpr gsize pieceSize = gsize{1} << 20;

template <class T>
using Outcome = std::expected<T, FileError>;

std::unexpected<FileError> failure(const std::string& path, const glib::Error& error) {
  return std::unexpected(FileError{error.matches(G_IO_ERROR, G_IO_ERROR_NOT_FOUND),
                                   fmt::format("can't read {}: {}", path, error.message())});
}

std::unexpected<FileError> failure(const std::string& path, std::string_view reason) {
  return std::unexpected(FileError{false, fmt::format("can't read {}: {}", path, reason)});
}

// Asked before it is opened: to open a pipe is to wait for its other end.
async::Task<Outcome<void>> checkFile(Ref<GFile> file, std::string path, std::uint64_t limit) {
  auto [pending, result] = glib::startAsync();
  g_file_query_info_async(file.get(), G_FILE_ATTRIBUTE_STANDARD_TYPE "," G_FILE_ATTRIBUTE_STANDARD_SIZE,
                          G_FILE_QUERY_INFO_NONE, G_PRIORITY_DEFAULT, pending.cancellable,
                          glib::PendingCall::callback, pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return failure(path, "cancelled");
  glib::Error error;
  const auto info = adopt(g_file_query_info_finish(file.get(), finished->get(), error.out()));
  if (!info)
    co_return failure(path, error);
  if (g_file_info_get_file_type(info.get()) != G_FILE_TYPE_REGULAR)
    co_return failure(path, "it is no regular file");
  if (static_cast<std::uint64_t>(g_file_info_get_size(info.get())) > limit)
    co_return failure(path, "it is too large");
  co_return Outcome<void>();
}

async::Task<Outcome<Ref<GInputStream>>> openFile(Ref<GFile> file, std::string path) {
  auto [pending, result] = glib::startAsync();
  g_file_read_async(file.get(), G_PRIORITY_DEFAULT, pending.cancellable, glib::PendingCall::callback,
                    pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return failure(path, "cancelled");
  glib::Error error;
  auto stream = adopt(G_INPUT_STREAM(g_file_read_finish(file.get(), finished->get(), error.out())));
  if (!stream)
    co_return failure(path, error);
  co_return std::move(stream);
}

// Empty at the end.
async::Task<Outcome<std::string>> readPiece(Ref<GInputStream> stream, std::string path) {
  auto [pending, result] = glib::startAsync();
  g_input_stream_read_bytes_async(stream.get(), pieceSize, G_PRIORITY_DEFAULT, pending.cancellable,
                                  glib::PendingCall::callback, pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return failure(path, "cancelled");
  glib::Error error;
  const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> bytes(
      g_input_stream_read_bytes_finish(stream.get(), finished->get(), error.out()), g_bytes_unref);
  if (!bytes)
    co_return failure(path, error);
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
  co_return std::string(data, size);
}

} // namespace

async::Task<std::expected<std::string, FileError>> GioFileReader::read(std::string path,
                                                                       std::uint64_t limit) {
  const auto file = adopt(g_file_new_for_path(path.c_str()));
  const auto checked = co_await checkFile(file, path, limit);
  if (!checked)
    co_return std::unexpected(checked.error());
  const auto stream = co_await openFile(file, path);
  if (!stream)
    co_return std::unexpected(stream.error());
  std::string content;
  for (;;) {
    const auto piece = co_await readPiece(*stream, path);
    if (!piece)
      co_return std::unexpected(piece.error());
    if (piece->empty())
      co_return std::move(content);
    // It may grow while it is read.
    if (content.size() + piece->size() > limit)
      co_return failure(path, "it is too large");
    content += *piece;
  }
}

} // namespace ondrel::platform::files
