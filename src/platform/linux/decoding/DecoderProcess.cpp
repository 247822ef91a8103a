#include "platform/linux/decoding/DecoderProcess.h"

#include "platform/linux/decoding/DecoderAnswers.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>

namespace ondrel::platform::decoding {

namespace {

using Kind = DecodeError::Kind;

// Large enough that a page comes in few turns of the main loop; the kernel cuts it to what is allowed.
constexpr int bufferSize = 1 << 20;

std::unexpected<DecodeError> failed(Kind kind, std::string description) {
  return std::unexpected(DecodeError{kind, std::move(description)});
}

// Told apart from what only this request got.
bool endsProcess(const Answer& answer) {
  return !answer && answer.error().kind != Kind::damaged && answer.error().kind != Kind::tooLarge;
}

} // namespace

DecodeResult<std::unique_ptr<DecoderProcess>> DecoderProcess::start(const Options& options, DocumentKind kind,
                                                                    files::UniqueFd document) {
  std::array<int, 2> ends{};
  if (!options.poller)
    return failed(Kind::unavailable, "no descriptor was left to wait for decoders with");
  // Only this end doesn't block: the flag belongs to the open description, and each end has its own.
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
    return failed(Kind::unavailable, fmt::format("no socket: {}", std::strerror(errno)));
  files::UniqueFd own(ends[0]);
  files::UniqueFd theirs(ends[1]);
  fcntl(own.get(), F_SETFL, O_NONBLOCK);
  setsockopt(theirs.get(), SOL_SOCKET, SO_SNDBUF, &bufferSize, sizeof bufferSize);

  const auto launcher = glib::adopt(g_subprocess_launcher_new(
      static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_SILENCE | G_SUBPROCESS_FLAGS_STDERR_SILENCE)));
  // Nothing of the user's: what the libraries would read from there is not for this process.
  std::array<const char*, 3> environment = {"LC_ALL=C.UTF-8", "GIO_USE_VFS=local", nullptr};
  g_subprocess_launcher_set_environ(launcher.get(), const_cast<char**>(environment.data()));
  g_subprocess_launcher_set_cwd(launcher.get(), "/");
  g_subprocess_launcher_take_fd(launcher.get(), theirs.release(), socketDescriptor);
  g_subprocess_launcher_take_fd(launcher.get(), document.release(), documentDescriptor);
  glib::Error error;
  const char* argument = kind == DocumentKind::pdf ? "pdf" : "image";
  std::array<const char*, 3> command = {options.program.c_str(), argument, nullptr};
  auto process = glib::adopt(g_subprocess_launcher_spawnv(launcher.get(), command.data(), error.out()));
  if (!process)
    return failed(Kind::unavailable, fmt::format("can't start the decoder: {}", error.message()));
  return std::unique_ptr<DecoderProcess>(new DecoderProcess(options, std::move(process), std::move(own)));
}

DecoderProcess::DecoderProcess(const Options& options, glib::Ref<GSubprocess> process, files::UniqueFd socket)
    : poller_(options.poller), limit_(options.limit), process_(std::move(process)),
      socket_(std::move(socket)) {
  scope_.spawn(work());
}

DecoderProcess::~DecoderProcess() {
  g_subprocess_force_exit(process_.get());
}

async::Future<Answer> DecoderProcess::ask(const Request& request) {
  auto [resolver, future] = async::makeFuture<Answer>();
  jobs_.push_back({request, std::move(resolver)});
  hasJobs_.send();
  return std::move(future);
}

async::Task<void> DecoderProcess::work() {
  while (co_await hasJobs_.wait()) {
    while (!jobs_.empty()) {
      auto job = std::move(jobs_.front());
      jobs_.pop_front();
      if (job.resolver.abandoned())
        continue;
      if (failure_) {
        job.resolver.resolve(std::unexpected(*failure_));
        continue;
      }
      auto answer = co_await async::withDeadline(limit_, exchange(job.request));
      if (!answer)
        answer = failed(Kind::timedOut, "the decoder took too long");
      if (endsProcess(*answer)) {
        failure_ = answer->error();
        g_subprocess_force_exit(process_.get());
      }
      job.resolver.resolve(std::move(*answer));
    }
  }
}

async::Task<Answer> DecoderProcess::exchange(Request request) {
  AnswerHeader header;
  std::array<std::uint8_t, sizeof header> bytes{};
  // The buffer is empty, since there is one request at a time.
  if (send(socket_.get(), &request, sizeof request, MSG_NOSIGNAL) != static_cast<ssize_t>(sizeof request))
    co_return failed(Kind::crashed, "the decoder has ended");
  const auto got = co_await read(bytes.data(), bytes.size());
  if (got != bytes.size())
    co_return failed(Kind::crashed, "the decoder ended without an answer");
  std::memcpy(&header, bytes.data(), sizeof header);
  const auto length = answerLength(request, header);
  if (!length)
    co_return std::unexpected(length.error());
  std::vector<std::uint8_t> answer(*length);
  const auto filled = co_await read(answer.data(), answer.size());
  if (filled != answer.size())
    co_return failed(Kind::crashed, "the decoder ended within an answer");
  co_return answer;
}

async::Task<std::size_t> DecoderProcess::read(std::uint8_t* buffer, std::size_t count) {
  std::size_t filled = 0;
  while (filled < count) {
    const auto got = recv(socket_.get(), buffer + filled, count - filled, 0);
    if (got > 0) {
      filled += static_cast<std::size_t>(got);
      continue;
    }
    if (got == 0 || (errno != EAGAIN && errno != EINTR))
      break;
    const auto ready = co_await poller_->ready(socket_.get(), EPOLLIN | EPOLLRDHUP);
    if (!ready)
      break;
  }
  co_return filled;
}

} // namespace ondrel::platform::decoding
