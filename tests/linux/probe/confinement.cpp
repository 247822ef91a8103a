#include "decoder/Confinement.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <initializer_list>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

// Shuts itself off as the decoder does and tries what it must not be able to do. Prints what it could.
int main(int, char** argv) {
  const int own = open(argv[0], O_RDONLY);
  if (!ondrel::decoder::setLimits() || !ondrel::decoder::shutOff())
    return 1;
  const auto tell = [](const char* what, bool could) {
    if (could)
      std::printf("%s ", what);
  };
  for (const char* path :
       {"/etc/passwd", "/proc/self/environ", "/proc/1/cmdline", "/root", "/home", "/tmp", "/"})
    tell(path, open(path, O_RDONLY) >= 0);
  tell("create", open("/tmp/ondrel-escaped", O_WRONLY | O_CREAT, 0600) >= 0);
  tell("unlink", unlink("/tmp/ondrel-escaped") == 0 || errno == ENOENT);
  tell("inet", socket(AF_INET, SOCK_STREAM, 0) >= 0);
  tell("unix", socket(AF_UNIX, SOCK_STREAM, 0) >= 0);
  const auto child = fork();
  if (child == 0)
    _exit(0);
  tell("fork", child >= 0);
  char* const none[] = {nullptr};
  tell("memory",
       mmap(nullptr, std::size_t{4} << 30, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED);
  tell("code", mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED);
  tell("signals", fcntl(own, F_SETOWN, getpid()) == 0);
  tell("which signal", fcntl(own, F_SETSIG, SIGKILL) == 0);
  tell("asynchronous", fcntl(own, F_SETFL, O_ASYNC) == 0);
  tell("no flags", fcntl(own, F_SETFD, FD_CLOEXEC) != 0 || fcntl(own, F_SETFL, O_NONBLOCK) != 0);
  char byte = 0;
  tell("the file", read(own, &byte, 1) == 1);
  std::fflush(stdout);
  execve("/bin/true", none, none);
  std::puts("no exec");
}
