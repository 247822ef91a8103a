#include "decoder/Confinement.h"

#include <linux/landlock.h>
#include <seccomp.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <initializer_list>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ondrel::decoder {

namespace {

// A photograph of 100 million pixels, its turned copy and the file itself fit.
constexpr rlim_t mostMemory = rlim_t{1536} << 20;
constexpr rlim_t mostDescriptors = 64;

bool limit(__rlimit_resource resource, rlim_t most) {
  const rlimit value{most, most};
  return setrlimit(resource, &value) == 0;
}

int openRuleset(int version) {
  landlock_ruleset_attr attributes{};
  // Everything that the first version knows; each right that isn't granted below is denied.
  attributes.handled_access_fs = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;
  if (version >= 2)
    attributes.handled_access_fs |= LANDLOCK_ACCESS_FS_REFER;
  return static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
}

void grantReading(int ruleset, const char* folder) {
  landlock_path_beneath_attr rule{};
  rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
  rule.parent_fd = open(folder, O_PATH | O_CLOEXEC);
  if (rule.parent_fd < 0)
    return;
  syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
  close(rule.parent_fd);
}

// Whether the files of the system are all that can be read now.
bool narrowFiles() {
  const auto version =
      static_cast<int>(syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION));
  const int ruleset = version > 0 ? openRuleset(version) : -1;
  if (ruleset < 0)
    return false;
  // Fonts with their settings and caches, the PDF library's tables.
  for (const char* folder : {"/usr/share", "/usr/local/share/fonts", "/etc/fonts", "/var/cache/fontconfig"})
    grantReading(ruleset, folder);
  const bool isNarrow = syscall(SYS_landlock_restrict_self, ruleset, 0) == 0;
  close(ruleset);
  return isNarrow;
}

// The bits of an argument that the mask names are as given.
scmp_arg_cmp bitsAre(unsigned argument, scmp_datum_t mask, scmp_datum_t bits) {
  return {argument, SCMP_CMP_MASKED_EQ, mask, bits};
}

scmp_arg_cmp equals(unsigned argument, scmp_datum_t value) {
  return {argument, SCMP_CMP_EQ, value, 0};
}

class Filter {
 public:
  // Refused calls fail as if not permitted: libraries try what they can do without.
  Filter() : context_(seccomp_init(SCMP_ACT_ERRNO(EPERM))), works_(context_ != nullptr) {}
  ~Filter() { seccomp_release(context_); }
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;

  void allow(std::initializer_list<int> calls) {
    for (const int call : calls)
      add(SCMP_ACT_ALLOW, call, {});
  }
  // If all of them hold.
  void allowIf(int call, std::initializer_list<scmp_arg_cmp> conditions) {
    add(SCMP_ACT_ALLOW, call, conditions);
  }
  void fail(int call, int error) { add(SCMP_ACT_ERRNO(static_cast<std::uint32_t>(error)), call, {}); }
  bool load() { return works_ && seccomp_load(context_) == 0; }

 private:
  void add(std::uint32_t what, int call, std::initializer_list<scmp_arg_cmp> conditions) {
    // Calls that this architecture hasn't got are no fault.
    works_ = works_ && (call < 0 ||
                        seccomp_rule_add_array(context_, what, call, static_cast<unsigned>(conditions.size()),
                                               std::data(conditions)) == 0);
  }

  scmp_filter_ctx context_;
  bool works_;
};

bool filterCalls(bool mayOpen) {
  Filter filter;
  // Reading and answering with what is open.
  filter.allow({SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(writev),
                SCMP_SYS(close), SCMP_SYS(lseek), SCMP_SYS(_llseek), SCMP_SYS(fstat), SCMP_SYS(fstat64),
                SCMP_SYS(fstatfs), SCMP_SYS(poll), SCMP_SYS(ppoll), SCMP_SYS(getdents64),
                SCMP_SYS(fadvise64)});
  // Nothing that has the kernel send signals when there is something to read, for they go to any process of
  // the user's.
  for (const int call : {SCMP_SYS(fcntl), SCMP_SYS(fcntl64)}) {
    for (const scmp_datum_t command : {F_GETFD, F_SETFD, F_GETFL, F_DUPFD, F_DUPFD_CLOEXEC})
      filter.allowIf(call, {equals(1, command)});
    filter.allowIf(call, {equals(1, F_SETFL), bitsAre(2, O_ASYNC, 0)});
  }
  // Memory, that of code excepted.
  filter.allow({SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise)});
  const auto isNoCode = bitsAre(2, PROT_EXEC, 0);
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)})
    filter.allowIf(call, {isNoCode});
  // Threads, and nothing that is a process of its own. The newer call has its flags out of the filter's
  // sight.
  filter.allowIf(SCMP_SYS(clone), {bitsAre(0, CLONE_THREAD, CLONE_THREAD)});
  filter.fail(SCMP_SYS(clone3), ENOSYS);
  filter.allow({SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(sched_yield),
                SCMP_SYS(sched_getaffinity), SCMP_SYS(gettid), SCMP_SYS(getpid), SCMP_SYS(exit),
                SCMP_SYS(exit_group), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigaction),
                SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack), SCMP_SYS(restart_syscall)});
  // Clocks, chance, and what libraries like to know.
  filter.allow({SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep),
                SCMP_SYS(nanosleep), SCMP_SYS(gettimeofday), SCMP_SYS(time), SCMP_SYS(getrandom),
                SCMP_SYS(uname), SCMP_SYS(sysinfo), SCMP_SYS(getuid), SCMP_SYS(geteuid), SCMP_SYS(getgid),
                SCMP_SYS(getegid), SCMP_SYS(getrusage)});
  // Whether a file is there, which Landlock tells too.
  filter.allow({SCMP_SYS(stat), SCMP_SYS(stat64), SCMP_SYS(lstat), SCMP_SYS(newfstatat), SCMP_SYS(statx),
                SCMP_SYS(access), SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(readlink),
                SCMP_SYS(readlinkat)});
  if (mayOpen) {
    constexpr scmp_datum_t writing = O_ACCMODE | O_CREAT | O_TRUNC;
    filter.allowIf(SCMP_SYS(openat), {bitsAre(2, writing, O_RDONLY)});
    filter.allowIf(SCMP_SYS(open), {bitsAre(1, writing, O_RDONLY)});
  }
  return filter.load();
}

} // namespace

bool setLimits() {
  return limit(RLIMIT_AS, mostMemory) && limit(RLIMIT_FSIZE, 0) && limit(RLIMIT_CORE, 0) &&
         limit(RLIMIT_NOFILE, mostDescriptors) && prctl(PR_SET_DUMPABLE, 0) == 0 &&
         prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

bool shutOff() {
  return filterCalls(narrowFiles());
}

} // namespace ondrel::decoder
