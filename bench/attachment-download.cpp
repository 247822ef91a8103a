// How fast a file of 1 GB comes from this machine to the disk, by the program's own way and by the web
// engine's. Prints one line of JSON with bytes a second, and how often a second its row shows progress, for
// bench/run.
#include "EngineWindow.h"
#include "PageDelegate.h"
#include "attachments/FileTransfer.h"
#include "platform/Download.h"
#include "platform/WebView.h"
#include "platform/linux/files/GioNewFiles.h"
#include "platform/linux/network/SoupHttpClient.h"
#include "web/page/DownloadItem.h"

#include <arpa/inet.h>
#include <filesystem>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace ondrel;
using namespace ondrel::bench;

constexpr std::int64_t size = 1'000'000'000;
constexpr int rounds = 5;

// Gives the file to whoever connects, one after the other.
class FileServer {
 public:
  FileServer() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    if (bind(socket_, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(socket_, 8) != 0 ||
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
      fail("there is no port");
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
  }
  FileServer(const FileServer&) = delete;
  FileServer& operator=(const FileServer&) = delete;
  ~FileServer() {
    shutdown(socket_, SHUT_RDWR);
    thread_.join();
    close(socket_);
  }
  std::string url() const { return fmt::format("http://127.0.0.1:{}/file", port_); }

 private:
  void run() const {
    const std::string piece(std::size_t{1} << 20, 'x');
    for (int peer = accept(socket_, nullptr, nullptr); peer >= 0; peer = accept(socket_, nullptr, nullptr)) {
      char request[4096];
      const auto head = fmt::format("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                                    "Content-Disposition: attachment\r\nContent-Length: {}\r\n"
                                    "Connection: close\r\n\r\n",
                                    size);
      if (recv(peer, request, sizeof(request), 0) > 0 &&
          send(peer, head.data(), head.size(), MSG_NOSIGNAL) > 0)
        for (std::int64_t left = size; left > 0;) {
          const auto sent =
              send(peer, piece.data(), std::min<std::size_t>(piece.size(), static_cast<std::size_t>(left)),
                   MSG_NOSIGNAL);
          if (sent <= 0)
            break;
          left -= sent;
        }
      close(peer);
    }
  }

  int socket_;
  int port_ = 0;
  std::thread thread_;
};

// Lets the engine save what it is sent.
class Saver final : public PageDelegate {
 public:
  explicit Saver(std::string path) : path_(std::move(path)) {}
  async::Signal finished;

  void decidePolicy(const platform::NavigationAction&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::allow);
  }
  void decidePolicy(const platform::NavigationResponse&, platform::PolicyReply reply) override {
    std::move(reply)(platform::NavigationPolicy::download);
  }
  void didFail(const platform::WebError&) override {} // a download is the end of the load
  void didBecomeDownload(std::shared_ptr<platform::Download> download) override {
    download->setDestinationHandler([this](auto, auto reply) { std::move(reply)(path_); });
    end_ = download->finished.subscribe([this] { finished.send(); });
    failure_ = download->failed.subscribe([](const std::string& error) { fail(error); });
    download_ = std::move(download);
  }

 private:
  std::string path_;
  std::shared_ptr<platform::Download> download_;
  base::Subscription end_;
  base::Subscription failure_;
};

double speed(Clock::time_point begin, const std::string& path) {
  const auto time = std::chrono::duration<double>(Clock::now() - begin).count();
  if (std::filesystem::file_size(path) != size)
    fail("the file is not whole");
  std::filesystem::remove(path);
  return static_cast<double>(size) / time;
}

async::Task<void> measure(platform::WebView& view, Saver& saver, std::string url, std::string path) {
  platform::network::SoupHttpClient http({.userAgent = "bench"});
  platform::files::GioNewFiles files;
  std::vector<double> own, engine, shown;
  for (int round = -1; round < rounds; ++round) {
    auto begin = Clock::now();
    view.load(url);
    co_await saver.finished.wait();
    const auto theirs = speed(begin, path);
    int steps = 0;
    const auto item =
        std::make_shared<web::DownloadItem>("file", path, web::DownloadState::Kind::downloading, [] {});
    const auto drawn = item->bytesWritten.observe([&steps] { ++steps; });
    begin = Clock::now();
    const auto done = co_await attachments::fetchToFile(
        http, files, {.url = url, .path = path},
        {.progressed = [item](auto written, auto total) { item->setProgress(written, total); },
         .arrived = [] {}});
    if (!done)
      fail(done.error().description());
    const auto ours = speed(begin, path);
    if (round < 0)
      continue; // the first of each fills caches
    engine.push_back(theirs);
    own.push_back(ours);
    shown.push_back((steps - 1) * ours / static_cast<double>(size)); // pauses between them
  }
  fmt::print("{{\"own\": {:.0f}, \"engine\": {:.0f}, \"ratio\": {:.3f}, \"shown\": {:.1f}}}\n", median(own),
             median(engine), median(own) / median(engine), quantile(shown, 1));
}

} // namespace

int main() {
  char folder[] = "/tmp/ondrel-bench-XXXXXX";
  if (!mkdtemp(folder))
    fail("there is no folder to write to");
  const auto path = std::string(folder) + "/file";
  const FileServer server;
  {
    EngineWindow window;
    Saver saver(path);
    const auto view = window.factory().make({});
    view->setDelegate(&saver);
    window.show(static_cast<GtkWidget*>(view->nativeView().handle));
    runToEnd(measure(*view, saver, server.url(), path));
    view->setDelegate(nullptr);
  }
  std::filesystem::remove_all(folder);
  return 0;
}
