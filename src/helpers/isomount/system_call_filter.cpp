// SPDX-License-Identifier: GPL-2.0-or-later
#include <seccomp.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "helpers/isomount/sandbox.h"

namespace kelvane::isomount {

#ifdef __SANITIZE_ADDRESS__

// The sanitizers look at their own process while it ends, with calls that no server of a volume
// makes.
bool filterSystemCalls(std::string*) {
  return true;
}

#else

namespace {

constexpr int kAllowed[] = {
    // requests and answers, and the source
    SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(preadv), SCMP_SYS(write),
    SCMP_SYS(writev), SCMP_SYS(splice), SCMP_SYS(vmsplice), SCMP_SYS(pipe), SCMP_SYS(pipe2),
    SCMP_SYS(fcntl), SCMP_SYS(close), SCMP_SYS(lseek), SCMP_SYS(fstat), SCMP_SYS(newfstatat),
    SCMP_SYS(dup2), SCMP_SYS(dup3), SCMP_SYS(poll), SCMP_SYS(ppoll),
    // memory
    SCMP_SYS(brk), SCMP_SYS(mmap), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise),
    SCMP_SYS(mprotect),
    // the C library on its own behalf, and the end
    SCMP_SYS(futex), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
    SCMP_SYS(restart_syscall), SCMP_SYS(clock_gettime), SCMP_SYS(getrandom), SCMP_SYS(getpid),
    SCMP_SYS(gettid), SCMP_SYS(tgkill), SCMP_SYS(geteuid), SCMP_SYS(rseq), SCMP_SYS(exit),
    SCMP_SYS(exit_group)};

}  // namespace

bool filterSystemCalls(std::string* error) {
  const std::unique_ptr<void, void (*)(void*)> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)),
                                                      &seccomp_release);
  int result = filter ? 0 : -ENOMEM;
  for (const int call : kAllowed) {
    if (result != 0) break;
    result = seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0);
  }
  if (result == 0) result = seccomp_load(filter.get());
  if (result == 0) return true;
  *error = std::string("cannot give up rights: system call filter: ") + std::strerror(-result);
  return false;
}

#endif

}  // namespace kelvane::isomount
