// SPDX-License-Identifier: GPL-2.0-or-later
#include "ring_device.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "owned_path.h"

namespace kelvane::kernelburner {
namespace {

constexpr char kDevices[] = "/sys/class/uio";

/// The name of the device ("uio0") whose own name tells the storage object; empty without one.
std::string deviceOf(const std::string& name) {
  std::error_code failure;
  for (std::filesystem::directory_iterator entry(kDevices, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    const auto purpose = readAttribute(entry->path() / "name");
    if (purpose.find("/" + name + "/") != std::string::npos) return entry->path().filename();
  }
  return {};
}

}  // namespace

std::unique_ptr<RingDevice> RingDevice::open(const std::string& name, std::string* error) {
  const auto device = deviceOf(name);
  if (device.empty()) {
    *error = "The kernel has made no device for " + name + ".";
    return nullptr;
  }
  const auto sizeText = readAttribute(std::filesystem::path(kDevices) / device / "maps/map0/size");
  const auto size = static_cast<std::size_t>(std::strtoull(sizeText.c_str(), nullptr, 0));
  virtualdrive::FileDescriptor file(::open(("/dev/" + device).c_str(), O_RDWR | O_CLOEXEC));
  void* memory = file && size > 0
                     ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0)
                     : MAP_FAILED;
  if (memory == MAP_FAILED) {
    *error = "/dev/" + device + ": " + std::strerror(errno);
    return nullptr;
  }
  return std::unique_ptr<RingDevice>(
      new RingDevice(std::move(file), {static_cast<std::byte*>(memory), size}));
}

RingDevice::~RingDevice() {
  munmap(memory_.data(), memory_.size());
}

void RingDevice::takeNews() const {
  std::uint32_t count = 0;
  // Only that something came matters: how much is seen in the ring.
  static_cast<void>(!read(descriptor(), &count, sizeof count));
}

void RingDevice::tellKernel() const {
  const std::uint32_t any = 0;
  if (write(descriptor(), &any, sizeof any) != sizeof any) {
    std::fprintf(stderr, "The kernel cannot be told of carried out commands: %s\n",
                 std::strerror(errno));
  }
}

}  // namespace kelvane::kernelburner
