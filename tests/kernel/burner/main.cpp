// SPDX-License-Identifier: GPL-2.0-or-later
//
// kernel_burner DISC.kvdisc NAME: plugs the emulated drive with that disc into the running kernel,
// says "ready srN" on standard output, and unplugs it when it is told to end (SIGTERM, SIGINT) or
// when the drive has disappeared because of a fault. Exit status 0: it was plugged in and out.

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>

#include "kernel_drive.h"

namespace {

using namespace kelvane::kernelburner;
using kelvane::virtualdrive::FileDescriptor;
using kelvane::virtualdrive::VirtualDrive;

// Before any thread begins, so that all of them leave the signals to the descriptor.
FileDescriptor signalsToEnd() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC));
}

void waitForEither(const FileDescriptor& one, const FileDescriptor& other) {
  std::array<pollfd, 2> sources{pollfd{one.get(), POLLIN, 0}, pollfd{other.get(), POLLIN, 0}};
  while (poll(sources.data(), sources.size(), -1) < 0) {
  }
}

int plugUntilTold(const std::string& disc, const std::string& name) {
  const FileDescriptor told = signalsToEnd();
  const FileDescriptor gone(eventfd(0, EFD_CLOEXEC));
  std::string error;
  const auto drive = VirtualDrive::open(disc, &error);
  const auto noteGone = [&gone] {
    const std::uint64_t one = 1;
    static_cast<void>(!write(gone.get(), &one, sizeof one));
  };
  const auto plugged = drive ? KernelDrive::plug(*drive, name, noteGone, &error) : nullptr;
  if (!plugged) {
    std::fprintf(stderr, "kernel_burner: %s\n", error.c_str());
    return 1;
  }
  std::printf("ready %s\n", plugged->deviceName().c_str());
  std::fflush(stdout);
  waitForEither(told, gone);
  return 0;
}

}  // namespace

int main(int count, char** words) {
  constexpr int kWrongArguments = 2;
  if (count != 3) {
    std::fputs("kernel_burner DISC.kvdisc NAME\n", stderr);
    return kWrongArguments;
  }
  return plugUntilTold(words[1], words[2]);
}
