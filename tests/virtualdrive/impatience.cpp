// SPDX-License-Identifier: GPL-2.0-or-later
// A library that is preloaded into burning programs in the tests. After commands that a real drive
// takes its time for they wait: growisofs and dvd+rw-format by polling no descriptor for a second,
// libburn by sleeping. Here a second passes in ten milliseconds.
#include <dlfcn.h>
#include <poll.h>
#include <unistd.h>

#define KELVANE_STANDS_IN extern "C" __attribute__((visibility("default")))

namespace {

constexpr int kHurry = 100;

}  // namespace

KELVANE_STANDS_IN int poll(pollfd* descriptors, nfds_t count, int milliseconds) {
  using Poll = int(pollfd*, nfds_t, int);
  static auto* next = reinterpret_cast<Poll*>(dlsym(RTLD_NEXT, "poll"));
  return next(descriptors, count, count == 0 ? milliseconds / kHurry : milliseconds);
}

KELVANE_STANDS_IN int usleep(useconds_t microseconds) {
  using Sleep = int(useconds_t);
  static auto* next = reinterpret_cast<Sleep*>(dlsym(RTLD_NEXT, "usleep"));
  return next(microseconds / kHurry);
}

KELVANE_STANDS_IN unsigned sleep(unsigned seconds) {
  for (unsigned i = 0; i < seconds; ++i) usleep(1000000);
  return 0;
}
