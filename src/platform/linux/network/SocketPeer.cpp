#include "platform/linux/network/SocketPeer.h"

#include "platform/linux/files/UniqueFd.h"

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cstring>
#include <optional>

namespace ondrel::platform::network {

namespace {

using Peer = TcpConnection::Peer;

struct Endpoint {
  int family = AF_UNSPEC;
  __be16 port = 0;
  std::array<__be32, 4> address{};
};

using NameOfSocket = int (*)(int fd, sockaddr* name, socklen_t* size);

std::optional<Endpoint> endpoint(int fd, NameOfSocket nameOf) {
  sockaddr_storage name{};
  socklen_t size = sizeof name;
  if (nameOf(fd, reinterpret_cast<sockaddr*>(&name), &size) != 0)
    return std::nullopt;
  Endpoint result;
  result.family = name.ss_family;
  if (name.ss_family == AF_INET) {
    const auto& v4 = reinterpret_cast<const sockaddr_in&>(name);
    result.port = v4.sin_port;
    result.address[0] = v4.sin_addr.s_addr;
  } else if (name.ss_family == AF_INET6) {
    const auto& v6 = reinterpret_cast<const sockaddr_in6&>(name);
    result.port = v6.sin6_port;
    std::memcpy(result.address.data(), &v6.sin6_addr, sizeof v6.sin6_addr);
    // An IPv4 peer of a socket for both: in the tables it is one of IPv4.
    if (IN6_IS_ADDR_V4MAPPED(&v6.sin6_addr)) {
      result.family = AF_INET;
      result.address = {result.address[3], 0, 0, 0};
    }
  } else {
    return std::nullopt;
  }
  return result;
}

struct Request {
  nlmsghdr header{};
  inet_diag_req_v2 socket{};
};

Request requestFor(const Endpoint& source, const Endpoint& destination) {
  Request request;
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  request.header.nlmsg_flags = NLM_F_REQUEST;
  request.socket.sdiag_family = static_cast<__u8>(source.family);
  request.socket.sdiag_protocol = IPPROTO_TCP;
  request.socket.idiag_states = ~0U;
  auto& id = request.socket.id;
  id.idiag_sport = source.port;
  id.idiag_dport = destination.port;
  std::memcpy(id.idiag_src, source.address.data(), sizeof id.idiag_src);
  std::memcpy(id.idiag_dst, destination.address.data(), sizeof id.idiag_dst);
  id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
  id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
  return request;
}

Peer peerFrom(const nlmsghdr& header, const void* payload) {
  if (header.nlmsg_type == NLMSG_ERROR) {
    nlmsgerr failure{};
    if (header.nlmsg_len < NLMSG_LENGTH(sizeof failure))
      return Peer::unknown;
    std::memcpy(&failure, payload, sizeof failure);
    return failure.error == -ENOENT ? Peer::gone : Peer::unknown;
  }
  inet_diag_msg socket{};
  if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY || header.nlmsg_len < NLMSG_LENGTH(sizeof socket))
    return Peer::unknown;
  std::memcpy(&socket, payload, sizeof socket);
  // A socket that no process has any more is kept for a while, as root's and without an inode.
  if (socket.idiag_inode == 0)
    return Peer::gone;
  return socket.idiag_uid == geteuid() ? Peer::sameUser : Peer::otherUser;
}

} // namespace

Peer peerOfSocket(int fd) {
  const auto ours = endpoint(fd, getsockname);
  const auto theirs = endpoint(fd, getpeername);
  if (!ours)
    return Peer::unknown;
  if (!theirs)
    return Peer::gone;
  const files::UniqueFd tables(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
  const auto request = requestFor(*theirs, *ours);
  if (!tables || send(tables.get(), &request, sizeof request, 0) != sizeof request)
    return Peer::unknown;
  // The kernel has answered by now.
  alignas(nlmsghdr) std::array<char, 4096> answer{};
  const auto size = recv(tables.get(), answer.data(), answer.size(), MSG_DONTWAIT);
  nlmsghdr header{};
  if (size < static_cast<ssize_t>(sizeof header))
    return Peer::unknown;
  std::memcpy(&header, answer.data(), sizeof header);
  if (header.nlmsg_len > static_cast<std::size_t>(size))
    return Peer::unknown;
  return peerFrom(header, answer.data() + NLMSG_HDRLEN);
}

} // namespace ondrel::platform::network
