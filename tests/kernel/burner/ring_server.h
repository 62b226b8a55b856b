// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <thread>

#include "command_ring.h"
#include "ring_device.h"
#include "virtualdrive/file_descriptor.h"

namespace kelvane::kernelburner {

/// A thread of its own that carries out what stands in a ring, until its owner goes.
class RingServer {
 public:
  /// `device` is borrowed, `ring` lies in its memory. Null, with a sentence in `error`, where the
  /// system has no descriptor left.
  static std::unique_ptr<RingServer> start(const RingDevice& device, CommandRing ring,
                                           CommandRing::Handler handler, std::string* error);
  ~RingServer();
  RingServer(const RingServer&) = delete;
  RingServer& operator=(const RingServer&) = delete;

 private:
  RingServer(const RingDevice& device, CommandRing ring, CommandRing::Handler handler,
             virtualdrive::FileDescriptor stop);
  void run();

  const RingDevice& device_;
  CommandRing ring_;
  CommandRing::Handler handler_;
  /// Becomes readable when the thread has to end.
  virtualdrive::FileDescriptor stop_;
  std::thread thread_;
};

}  // namespace kelvane::kernelburner
