// Asks the local server for its list of tools, over a new connection each time, by so many clients at a time.
// Prints one line of JSON, for bench/run: requests a second, and the times in milliseconds from the
// connecting to the end of the answer.
//
//   local-server PORT CLIENTS SECONDS
#include "Bench.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <iterator>
#include <string_view>
#include <thread>

namespace {

using namespace ondrel::bench;

constexpr std::string_view request =
    "POST /mcp HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
    "Content-Length: 46\r\n\r\n"
    R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})";

class Client {
 public:
  explicit Client(int port) {
    server_.sin_family = AF_INET;
    server_.sin_port = htons(static_cast<std::uint16_t>(port));
    server_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  }

  void askOnce() const {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&server_), sizeof server_) != 0)
      fail("nobody listens");
    if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size()))
      fail("the request was not taken");
    std::array<char, 16384> answer{};
    std::size_t size = 0;
    ssize_t got = 0;
    while ((got = recv(fd, answer.data() + size, answer.size() - size, 0)) > 0)
      size += static_cast<std::size_t>(got);
    close(fd);
    const std::string_view text(answer.data(), size);
    if (got < 0 || !text.starts_with("HTTP/1.1 200 OK\r\n") || !text.contains("open_in_ondrel") ||
        !text.ends_with("}"))
      fail("the answer is not the list of tools");
  }

  std::vector<double> askUntil(Clock::time_point end) const {
    std::vector<double> times;
    for (auto begin = Clock::now(); begin < end;) {
      askOnce();
      const auto now = Clock::now();
      times.push_back(Milliseconds(now - begin).count());
      begin = now;
    }
    return times;
  }

 private:
  sockaddr_in server_{};
};

} // namespace

int main(int count, char** arguments) {
  if (count != 4)
    fail("PORT CLIENTS SECONDS are needed");
  const Client client(std::atoi(arguments[1]));
  const auto clients = static_cast<std::size_t>(std::atoi(arguments[2]));
  const std::chrono::seconds length(std::atoi(arguments[3]));

  client.askUntil(Clock::now() + std::chrono::milliseconds(500)); // to warm up
  const auto begin = Clock::now();
  std::vector<std::vector<double>> times(clients);
  {
    std::vector<std::jthread> threads;
    for (auto& own : times)
      threads.emplace_back([&] { own = client.askUntil(begin + length); });
  }
  const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  std::vector<double> all;
  for (auto& own : times)
    std::ranges::move(own, std::back_inserter(all));
  if (all.empty())
    fail("nothing was asked");
  fmt::print("{{\"perSecond\": {}, \"p50\": {}, \"p99\": {}, \"longest\": {}}}\n",
             static_cast<double>(all.size()) / seconds, median(all), quantile(all, 0.99), quantile(all, 1.0));
  return 0;
}
