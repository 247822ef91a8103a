#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace ondrel::platform {

class HttpClientServer;

// One accepted connection, seen from the server. Blocking, on a thread of its own.
class HttpClientPeer {
 public:
  HttpClientPeer(HttpClientServer& server, int fd, int number) : server_(server), fd_(fd), number_(number) {}

  // A request with its body, as it came; empty when the client has gone.
  std::string request();
  void send(std::string_view bytes) const;
  void close();
  void reset(); // so that the client's kernel reports an error
  // Whether the client ends the connection within five seconds; what it still sends is thrown away.
  bool seesEnd() const;
  // Which connection it is, counted from 1.
  int number() const { return number_; }
  int fd() const { return fd_; }

 private:
  HttpClientServer& server_;
  int fd_;
  int number_;
  std::string buffer_;
};

// A server on a loopback port that does to each connection what the test says, faults included.
class HttpClientServer {
 public:
  using Behaviour = std::function<void(HttpClientPeer&)>;

  explicit HttpClientServer(Behaviour behaviour);
  ~HttpClientServer(); // waits for the behaviours to end

  // Answers each request of each connection with what `answer` says.
  static Behaviour answering(std::function<std::string(const std::string& request)> answer);

  std::string origin(const std::string& host = "127.0.0.1") const;
  std::string url(const std::string& path = "/", const std::string& host = "127.0.0.1") const;
  // All whole requests that came, in their order.
  std::vector<std::string> requests() const;

 private:
  friend HttpClientPeer;
  void accept();
  void serve(int fd, int number);

  Behaviour behaviour_;
  int listener_ = -1;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::vector<int> open_;
  std::vector<std::string> requests_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

std::string response(std::string_view status, std::string_view body, std::string_view headers = "");

} // namespace ondrel::platform
