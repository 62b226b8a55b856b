// SPDX-License-Identifier: GPL-2.0-or-later
// Speeds. They are remembered and reported; the emulated drive works as fast as it can whatever is
// set.
#include <algorithm>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/commands/drive_facts.h"

namespace kelvane::virtualdrive {
namespace {

/// The fastest write speed that is no faster than wanted, or the slowest there is.
int nearestWriteSpeed(const DriveSpeeds& speeds, std::uint32_t wanted) {
  for (const auto speed : speeds.write) {
    if (static_cast<std::uint32_t>(speed) <= wanted) return speed;
  }
  return speeds.write.back();
}

int nearestReadSpeed(const DriveSpeeds& speeds, std::uint32_t wanted) {
  return static_cast<int>(std::clamp(wanted, static_cast<std::uint32_t>(speeds.slowestRead),
                                     static_cast<std::uint32_t>(speeds.read)));
}

void setSpeeds(Command& command, std::uint32_t readSpeed, std::uint32_t writeSpeed) {
  const auto speeds = speedsFor(command.disc().medium);
  auto& drive = command.changeDrive();
  drive.readSpeed = nearestReadSpeed(speeds, readSpeed);
  drive.writeSpeed = nearestWriteSpeed(speeds, writeSpeed);
}

Lba lastAddress(const DiscState& disc) {
  return disc.capacity - 1;
}

}  // namespace

// MMC-5, 6.37: FFFFh means the best.
CommandResult setCdSpeed(Command& command) {
  setSpeeds(command, read16(command.block, 2), read16(command.block, 4));
  return {};
}

// MMC-5, 6.39: 1000 bytes in so many milliseconds.
CommandResult setStreaming(Command& command) {
  constexpr std::size_t kDescriptorBytes = 28;
  const std::size_t length = read16(command.block, 9);
  const auto type = command.block[8];
  if (type != 0) return refuse(kInvalidFieldInCommand);
  if (length != kDescriptorBytes || command.dataOut.size() < length) {
    return refuse(kParameterListLength);
  }
  const auto data = command.dataOut;
  if ((data[0] & 0x04) != 0) {  // back to the defaults
    constexpr std::uint32_t kFastest = 0xFFFF;
    setSpeeds(command, kFastest, kFastest);
    return {kGood, length};
  }
  const std::uint64_t readTime = read32(data, 16);
  const std::uint64_t writeTime = read32(data, 24);
  if (readTime == 0 || writeTime == 0) return refuse(kInvalidFieldInParameters);
  const auto perSecond = [](std::uint64_t size, std::uint64_t time) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(size * 1000 / time, 0xFFFF));
  };
  setSpeeds(command, perSecond(read32(data, 12), readTime), perSecond(read32(data, 20), writeTime));
  return {kGood, length};
}

// MMC-5, 6.8: performance (type 0, nominal) and write speeds (type 3).
CommandResult getPerformance(Command& command) {
  const auto type = command.block[10];
  const std::size_t most = read16(command.block, 8);
  const bool write = (command.block[1] & 0x04) != 0;
  const auto& drive = command.folder.drive;
  const auto writeSpeeds = speedsFor(command.disc().medium).write;
  const auto end = static_cast<std::uint32_t>(lastAddress(command.disc()));
  AnswerBytes bytes;
  bytes.u32(0);
  if (type == 0x00 && (command.block[1] & 0x03) == 0) {
    const auto speed = static_cast<std::uint32_t>(write ? drive.writeSpeed : drive.readSpeed);
    bytes.u8(write ? 0x02 : 0x00).zeros(3);
    if (most >= 1) bytes.u32(0).u32(speed).u32(end).u32(speed);
  } else if (type == 0x03) {
    bytes.u32(0);
    for (std::size_t i = 0; i < std::min(most, writeSpeeds.size()); ++i) {
      bytes.u32(0).u32(end).u32(static_cast<std::uint32_t>(drive.readSpeed));
      bytes.u32(static_cast<std::uint32_t>(writeSpeeds[i]));
    }
  } else {
    return refuse(kInvalidFieldInCommand);
  }
  const auto complete = type == 0x03 ? 4 + 16 * writeSpeeds.size() : std::size_t{20};
  bytes.patch32(0, complete);
  return answer(command, bytes, 8 + 16 * most);
}

}  // namespace kelvane::virtualdrive
