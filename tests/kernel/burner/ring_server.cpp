// SPDX-License-Identifier: GPL-2.0-or-later
#include "ring_server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace kelvane::kernelburner {

std::unique_ptr<RingServer> RingServer::start(const RingDevice& device, CommandRing ring,
                                              CommandRing::Handler handler, std::string* error) {
  virtualdrive::FileDescriptor stop(eventfd(0, EFD_CLOEXEC));
  if (!stop) {
    *error = std::strerror(errno);
    return nullptr;
  }
  return std::unique_ptr<RingServer>(
      new RingServer(device, std::move(ring), std::move(handler), std::move(stop)));
}

RingServer::RingServer(const RingDevice& device, CommandRing ring, CommandRing::Handler handler,
                       virtualdrive::FileDescriptor stop)
    : device_(device),
      ring_(std::move(ring)),
      handler_(std::move(handler)),
      stop_(std::move(stop)),
      thread_([this] { run(); }) {}

RingServer::~RingServer() {
  const std::uint64_t one = 1;
  static_cast<void>(!write(stop_.get(), &one, sizeof one));
  thread_.join();
}

void RingServer::run() {
  std::array<pollfd, 2> sources{pollfd{device_.descriptor(), POLLIN, 0},
                                pollfd{stop_.get(), POLLIN, 0}};
  while (true) {
    if (ring_.serve(handler_) > 0) device_.tellKernel();
    if (poll(sources.data(), sources.size(), -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (sources[1].revents != 0) return;
    if ((sources[0].revents & POLLIN) != 0) device_.takeNews();
    if ((sources[0].revents & POLLERR) != 0) return;
  }
}

}  // namespace kelvane::kernelburner
