#include "HttpClientServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace ondrel::platform {

std::string HttpClientPeer::request() {
  const auto wholeLength = [this]() -> std::size_t {
    const auto end = buffer_.find("\r\n\r\n");
    if (end == buffer_.npos)
      return std::string::npos;
    const auto length = buffer_.find("Content-Length: ");
    return end + 4 + (length < end ? std::strtoul(buffer_.c_str() + length + 16, nullptr, 10) : 0);
  };
  std::array<char, 65536> bytes{};
  while (wholeLength() > buffer_.size()) {
    const auto got = recv(fd_, bytes.data(), bytes.size(), 0);
    if (got <= 0)
      return "";
    buffer_.append(bytes.data(), static_cast<std::size_t>(got));
  }
  const auto whole = buffer_.substr(0, wholeLength());
  buffer_.erase(0, whole.size());
  const std::lock_guard lock(server_.mutex_);
  server_.requests_.push_back(whole);
  return whole;
}

void HttpClientPeer::send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0)
      return;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void HttpClientPeer::close() {
  shutdown(fd_, SHUT_RDWR);
}

void HttpClientPeer::reset() {
  const linger now{1, 0};
  setsockopt(fd_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  // Takes the descriptor's place, so that the connection goes without its number being given away.
  const int other = socket(AF_INET, SOCK_STREAM, 0);
  dup2(other, fd_);
  ::close(other);
}

bool HttpClientPeer::seesEnd() const {
  std::array<char, 65536> bytes{};
  pollfd waiting{fd_, POLLIN, 0};
  while (poll(&waiting, 1, 5000) > 0)
    if (recv(fd_, bytes.data(), bytes.size(), 0) <= 0)
      return true;
  return false;
}

HttpClientServer::HttpClientServer(Behaviour behaviour) : behaviour_(std::move(behaviour)) {
  listener_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listener_, 16) != 0)
    throw std::runtime_error("no port to listen on");
  getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { accept(); });
}

HttpClientServer::~HttpClientServer() {
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  {
    const std::lock_guard lock(mutex_);
    for (const int fd : open_)
      shutdown(fd, SHUT_RDWR);
  }
  for (auto& thread : threads_)
    thread.join();
  for (const int fd : open_)
    ::close(fd);
  ::close(listener_);
}

void HttpClientServer::accept() {
  for (int number = 1;; ++number) {
    const int fd = ::accept(listener_, nullptr, nullptr);
    if (fd < 0)
      return;
    const std::lock_guard lock(mutex_);
    open_.push_back(fd);
    threads_.emplace_back([this, fd, number] { serve(fd, number); });
  }
}

void HttpClientServer::serve(int fd, int number) {
  HttpClientPeer peer(*this, fd, number);
  behaviour_(peer);
  peer.close();
}

HttpClientServer::Behaviour
HttpClientServer::answering(std::function<std::string(const std::string& request)> answer) {
  return [answer = std::move(answer)](HttpClientPeer& peer) {
    for (auto request = peer.request(); !request.empty(); request = peer.request())
      peer.send(answer(request));
  };
}

std::vector<std::string> HttpClientServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

std::string HttpClientServer::origin(const std::string& host) const {
  return "http://" + host + ":" + std::to_string(port_);
}

std::string HttpClientServer::url(const std::string& path, const std::string& host) const {
  return origin(host) + path;
}

std::string response(std::string_view status, std::string_view body, std::string_view headers) {
  return "HTTP/1.1 " + std::string(status) + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
         std::string(headers) + "\r\n" + std::string(body);
}

} // namespace ondrel::platform
