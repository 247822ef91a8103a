#include "decoder/Confinement.h"
#include "decoder/Document.h"
#include "platform/linux/glib/Ref.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace ondrel;
using namespace ondrel::decoder;
using platform::decoding::Action;
using platform::decoding::AnswerHeader;
using platform::decoding::Description;
using platform::decoding::Request;

constexpr std::int64_t mostPixels = std::int64_t{1} << 24;

// Both end with the program at the other end.
void readWhole(void* buffer, std::size_t count) {
  auto* at = static_cast<char*>(buffer);
  while (count > 0) {
    const auto got = read(platform::decoding::socketDescriptor, at, count);
    if (got < 0 && errno == EINTR)
      continue;
    if (got <= 0)
      _exit(EXIT_SUCCESS);
    at += got;
    count -= static_cast<std::size_t>(got);
  }
}

void writeWhole(const void* bytes, std::size_t count) {
  const auto* at = static_cast<const char*>(bytes);
  while (count > 0) {
    const auto sent = write(platform::decoding::socketDescriptor, at, count);
    if (sent < 0 && errno == EINTR)
      continue;
    if (sent <= 0)
      _exit(EXIT_SUCCESS);
    at += sent;
    count -= static_cast<std::size_t>(sent);
  }
}

void answerHeader(Action action, Status status, std::size_t length) {
  const AnswerHeader header{status, action, length};
  writeWhole(&header, sizeof header);
}

template <class T>
void writeAll(const std::vector<T>& values) {
  writeWhole(values.data(), values.size() * sizeof(T));
}

void describe(const Document& document) {
  const auto& pages = document.pages();
  const Description description{static_cast<std::uint32_t>(pages.size()), document.isAnimation() ? 1U : 0U};
  answerHeader(Action::describe, Status::done, sizeof description + pages.size() * sizeof(PageDescription));
  writeWhole(&description, sizeof description);
  writeAll(pages);
}

void answer(Document& document, const Request& request) {
  const bool isPage = request.page >= 0 && static_cast<std::size_t>(request.page) < document.pages().size();
  const bool isSize = request.width > 0 && request.height > 0 &&
                      static_cast<std::int64_t>(request.width) * request.height <= mostPixels;
  if (request.action == Action::describe)
    return describe(document);
  if (request.action == Action::text && isPage) {
    const auto text = document.text(request.page);
    answerHeader(request.action, Status::done, text.size() * sizeof(PlacedCharacter));
    return writeAll(text);
  }
  if (request.action != Action::render || !isPage || !isSize)
    return answerHeader(request.action, Status::damaged, 0);
  const auto pixels = document.render(request.page, request.width, request.height);
  answerHeader(request.action, pixels ? Status::done : pixels.error(), pixels ? pixels->size() : 0);
  if (pixels)
    writeAll(*pixels);
}

// The mapping lasts as long as the process.
glib::Owned<GBytes> wholeFile() {
  struct stat status{};
  if (fstat(platform::decoding::documentDescriptor, &status) != 0 || status.st_size <= 0)
    return nullptr;
  const auto size = static_cast<std::size_t>(status.st_size);
  void* bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, platform::decoding::documentDescriptor, 0);
  return glib::Owned<GBytes>(bytes == MAP_FAILED ? nullptr : g_bytes_new_static(bytes, size));
}

Result<std::unique_ptr<Document>> openDocument(bool isPdf, GBytes* file) {
  if (!file)
    return std::unexpected(Status::damaged);
  try {
    return isPdf ? openPdf(file) : openImage(file);
  } catch (const std::bad_alloc&) {
    return std::unexpected(Status::tooLarge);
  }
}

} // namespace

// Started by the program alone: `ondrel-decoder image` or `ondrel-decoder pdf`.
int main(int argc, char** argv) {
  const std::string_view kind = argc == 2 ? argv[1] : "";
  if (kind != "image" && kind != "pdf")
    return EXIT_FAILURE;
  if (!setLimits())
    return EXIT_FAILURE;
  if (kind == "image")
    loadImageModules();
  if (!shutOff())
    return EXIT_FAILURE;

  Request request;
  readWhole(&request, sizeof request);
  const auto file = wholeFile();
  const auto document = openDocument(kind == "pdf", file.get());
  for (;; readWhole(&request, sizeof request)) {
    if (!document) {
      answerHeader(request.action, document.error(), 0);
      continue;
    }
    try {
      answer(**document, request);
    } catch (const std::bad_alloc&) {
      answerHeader(request.action, Status::tooLarge, 0); // thrown before a header went out
    }
  }
}
