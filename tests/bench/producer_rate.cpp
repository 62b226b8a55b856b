// SPDX-License-Identifier: GPL-2.0-or-later
// kv_bench_producer IMAGE REQUEST_BYTES: the seconds in which a Producer delivers the image once,
// in requests of that size.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "burn/producer.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  using Clock = std::chrono::steady_clock;
  constexpr uint64_t kBlockBytes = 2048;
  kelvane::Producer producer;
  producer.setFilePath(argv[1]);
  const uint64_t bytes = producer.fileSize().frames() * kBlockBytes;
  std::vector<char> buffer(std::strtoul(argv[2], nullptr, 10));
  if (bytes == 0 || buffer.empty()) return 2;
  const auto length = static_cast<uint32_t>(buffer.size());
  const auto start = Clock::now();
  producer.prepareTrack(nullptr, nullptr, nullptr);
  for (uint64_t done = 0; done < bytes;) {
    done += producer.produceDataForTrack(nullptr, buffer.data(), length, done / kBlockBytes,
                                         kBlockBytes, nullptr);
  }
  producer.cleanupTrackAfterBurn(nullptr);
  const std::chrono::duration<double> taken = Clock::now() - start;
  std::printf("%.6f\n", taken.count());
  return 0;
}
