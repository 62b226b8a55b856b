// SPDX-License-Identifier: GPL-2.0-or-later
// kv_bench_iso_walk IMAGE: opens the volume of a disc image and reads all its directories, without
// a mount. Prints the number of entries, the processor time in seconds and the peak of memory in
// MB.
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "helpers/isovolume/iso_volume.h"

namespace {

using kelvane::isovolume::DirectoryEntry;
using kelvane::isovolume::FileBlockSource;
using kelvane::isovolume::IsoVolume;
using kelvane::isovolume::kRootNode;
using kelvane::isovolume::NodeId;

/// The entries below `directory`, whose attributes are looked at as `find -size` does.
std::uint64_t walk(IsoVolume& volume, NodeId directory, std::uint64_t* bytes) {
  std::uint64_t entries = 0;
  (void)volume.readDirectory(directory, 0, [&](const DirectoryEntry& entry, std::uint64_t) {
    ++entries;
    *bytes += volume.attributes(entry.node).size;
    if (S_ISDIR(entry.type)) entries += walk(volume, entry.node, bytes);
    return true;
  });
  return entries;
}

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::string error;
  const auto source = FileBlockSource::open(argv[1], &error);
  const auto volume = source ? IsoVolume::open(*source, {}, &error) : nullptr;
  if (!volume) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  std::uint64_t bytes = 0;
  const std::uint64_t entries = walk(*volume, kRootNode, &bytes);
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%llu %.3f %.1f\n", static_cast<unsigned long long>(entries),
              secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
              static_cast<double>(usage.ru_maxrss) / 1024);
}
