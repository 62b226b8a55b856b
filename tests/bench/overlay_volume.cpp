// SPDX-License-Identifier: GPL-2.0-or-later
// kv_bench_volume OVERLAY DISC MOUNTPOINT: serves a volume as the application does, until it is
// unmounted, and then prints the processor time that it used itself, in seconds.
#include <sys/resource.h>

#include <cstdio>
#include <string>

#include "overlayfs/burn_fs_delegate.h"
#include "platform/foundation/notification_center.h"
#include "platform/userfs/gm_user_file_system.h"

namespace kelvane {
namespace {

constexpr double kCapacityMB = 700000;

double userSeconds() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec) / 1e6;
}

int serve(const std::string& overlay, const std::string& disc, const std::string& mountPoint) {
  BurnFSDelegate delegate(overlay, disc, {kCapacityMB, 0});
  GMUserFileSystem fileSystem(&delegate, false);
  fileSystem.mountAtPath(mountPoint, {"volname=bench", "local", "-f", "negative_vncache"});
  fileSystem.waitUntilUnmounted(-1);
  std::printf("%.3f\n", userSeconds());
  return 0;
}

}  // namespace
}  // namespace kelvane

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: kv_bench_volume OVERLAY DISC MOUNTPOINT\n");
    return 2;
  }
  return kelvane::serve(argv[1], argv[2], argv[3]);
}
