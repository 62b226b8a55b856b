// SPDX-License-Identifier: GPL-2.0-or-later
// A library that is preloaded into growisofs and dvd+rw-format in the tests. These wait by polling
// no descriptor for a second after each command that a real drive takes its time for.
#include <dlfcn.h>
#include <poll.h>

extern "C" __attribute__((visibility("default"))) int poll(pollfd* descriptors, nfds_t count,
                                                           int milliseconds) {
  if (count == 0) return 0;
  using Poll = int(pollfd*, nfds_t, int);
  static auto* next = reinterpret_cast<Poll*>(dlsym(RTLD_NEXT, "poll"));
  return next(descriptors, count, milliseconds);
}
