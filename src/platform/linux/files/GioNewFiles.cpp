#include "platform/linux/files/GioNewFiles.h"

#include "async/Scope.h"
#include "async/Signal.h"
#include "base/Translation.h"
#include "platform/linux/files/PendingFile.h"
#include "platform/linux/files/UniqueFd.h"
#include "platform/linux/glib/OnThread.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace ondrel::platform::files {

namespace {

template <class T>
using Outcome = std::expected<T, std::string>;
using Existing = NewFiles::Existing;

// A turn on another thread costs as much as some hundred KiB written.
constexpr std::size_t pieceSize = std::size_t{1} << 20;

// With a place for the path and one for the system's reason.
using Sentence = fmt::format_string<const std::string&, const std::string&>;

std::unexpected<std::string> failure(Sentence text, const std::string& path, int error) {
  const std::string reason = std::strerror(error);
  auto problem = base::trFormat(text, path, reason);
  const bool isFull = error == ENOSPC || error == EDQUOT;
  // TRANSLATORS: {} is what went wrong, without a full stop
  return std::unexpected(isFull ? base::trFormat("{}. Make room there, then try again.", problem) : problem);
}

std::unexpected<std::string> cancelled() {
  return std::unexpected<std::string>(base::tr("It was cancelled."));
}

struct Opened {
  std::shared_ptr<PendingFile> file;
  std::shared_ptr<UniqueFd> fd;
};

Outcome<Opened> openBeside(const std::string& path, Existing existing) {
  const auto folder = path.substr(0, path.rfind('/'));
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
    return failure(base::trMark("Can't make the folder {0}: {1}"), folder, errno);
  auto file = PendingFile::make(path, existing);
  if (!file)
    return std::unexpected(std::move(file).error());
  UniqueFd fd(open(file->path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!fd)
    return failure(base::trMark("Can't write {0}: {1}"), path, errno);
  return Opened{std::make_shared<PendingFile>(std::move(*file)), std::make_shared<UniqueFd>(std::move(fd))};
}

Outcome<void> writeAll(int fd, std::string_view bytes, const std::string& path) {
  while (!bytes.empty()) {
    const auto written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR)
      continue;
    if (written < 0)
      return failure(base::trMark("Can't write {0}: {1}"), path, errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

Outcome<void> writeRest(const Opened& opened, std::string_view rest, const std::string& path,
                        bool isReplacing) {
  const auto written = writeAll(opened.fd->get(), rest, path);
  if (!written)
    return written;
  // What is replaced isn't lost to a power cut. Some file systems tell of a full disk only here.
  if (opened.file->replaces() && fdatasync(opened.fd->get()) != 0)
    return failure(base::trMark("Can't write {0}: {1}"), path, errno);
  if (close(opened.fd->release()) != 0)
    return failure(base::trMark("Can't write {0}: {1}"), path, errno);
  return opened.file->moveIntoPlace(isReplacing);
}

class GioNewFile final : public NewFile {
 public:
  GioNewFile(Opened opened, std::string path, Existing existing)
      : opened_(std::move(opened)), path_(std::move(path)), isReplacing_(existing == Existing::isReplaced) {}
  GioNewFile(const GioNewFile&) = delete;
  GioNewFile& operator=(const GioNewFile&) = delete;
  ~GioNewFile() override {
    opened_.file.reset(); // at once: the program may be ending
    // The last one to close a large file without a name waits until its blocks are free.
    glib::startOnThread([fd = std::exchange(opened_.fd, nullptr)]() mutable { fd.reset(); });
  }

  async::Task<Outcome<void>> write(std::string bytes) override;
  async::Task<Outcome<void>> finish() override;

 private:
  // Waits until the piece that is on another thread is written, and tells how that went.
  async::Task<Outcome<void>> settle();
  void send();
  async::Task<void> writePiece(std::string bytes);

  Opened opened_;
  const std::string path_;
  const bool isReplacing_; // whatever is there in the end
  std::string gathered_;   // for the next piece
  bool isWriting_ = false;
  Outcome<void> outcome_;
  async::Signal written_;
  async::Scope scope_;
};

async::Task<Outcome<void>> GioNewFile::write(std::string bytes) {
  gathered_ += bytes;
  if (gathered_.size() < pieceSize)
    co_return outcome_;
  auto settled = co_await settle();
  if (settled)
    send();
  co_return settled;
}

void GioNewFile::send() {
  isWriting_ = true;
  scope_.spawn(writePiece(std::exchange(gathered_, {})));
}

async::Task<void> GioNewFile::writePiece(std::string bytes) {
  const auto done = co_await glib::onThread(
      [fd = opened_.fd, bytes = std::move(bytes), path = path_] { return writeAll(fd->get(), bytes, path); });
  if (done && !*done)
    outcome_ = *done;
  isWriting_ = false;
  written_.send();
}

async::Task<Outcome<void>> GioNewFile::settle() {
  while (isWriting_) {
    const bool came = co_await written_.wait();
    if (!came)
      co_return cancelled();
  }
  co_return outcome_;
}

async::Task<Outcome<void>> GioNewFile::finish() {
  auto settled = co_await settle();
  if (!settled)
    co_return settled;
  const auto done = co_await glib::onThread(
      [opened = std::move(opened_), rest = std::move(gathered_), path = path_, isReplacing = isReplacing_] {
        return writeRest(opened, rest, path, isReplacing);
      });
  co_return done.value_or(cancelled());
}

} // namespace

async::Task<Outcome<std::unique_ptr<NewFile>>> GioNewFiles::create(std::string path, Existing existing) {
  auto opened = co_await glib::onThread([path, existing] { return openBeside(path, existing); });
  if (!opened)
    co_return cancelled();
  if (!*opened)
    co_return std::unexpected(std::move(*opened).error());
  co_return std::make_unique<GioNewFile>(std::move(**opened), std::move(path), existing);
}

} // namespace ondrel::platform::files
