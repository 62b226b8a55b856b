// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/sg_io_transport.h"

#include <fcntl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/recording/mmc/sense_data.h"

namespace kelvane::mmc {
namespace {

constexpr size_t kLongestCommandBlock = 16;
constexpr uint8_t kCheckCondition = 0x02;

Answer unreachable(int errorNumber) {
  Answer answer;
  answer.status = Status::Unreachable;
  answer.errorNumber = errorNumber;
  return answer;
}

// The kernel lets an ordinary user set something in a drive over a descriptor for writing only.
// Whoever may not write is left to the kernel's judgement.
int openNode(const std::string& path, int access) {
  constexpr int kFlags = O_NONBLOCK | O_CLOEXEC;
  const int descriptor = open(path.c_str(), access | kFlags);
  const bool mayOnlyRead =
      descriptor < 0 && access == O_RDWR && (errno == EACCES || errno == EPERM || errno == EROFS);
  return mayOnlyRead ? open(path.c_str(), O_RDONLY | kFlags) : descriptor;
}

// What the kernel filled in, in our terms. A host or transport error means that no drive answered.
Answer answerFrom(const sg_io_hdr_t& header, std::span<const uint8_t> sense) {
  Answer answer;
  const int untransferred = std::clamp(header.resid, 0, static_cast<int>(header.dxfer_len));
  answer.transferred = header.dxfer_len - static_cast<unsigned>(untransferred);
  const bool hasSense = header.sb_len_wr > 0;
  if (header.status == kCheckCondition || hasSense) {
    answer.status = Status::CheckCondition;
    answer.sense = parseSenseData(sense.first(std::min<size_t>(header.sb_len_wr, sense.size())));
    return answer;
  }
  if (header.status != 0 || header.host_status != 0) return unreachable(EIO);
  answer.status = Status::Good;
  return answer;
}

}  // namespace

Answer SgIoTransport::read(std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
                           std::chrono::milliseconds timeLimit) {
  const int direction = data.empty() ? SG_DXFER_NONE : SG_DXFER_FROM_DEV;
  return execute(commandBlock, {data.data(), data.size(), direction}, O_RDONLY, timeLimit);
}

Answer SgIoTransport::write(std::span<const uint8_t> commandBlock, std::span<const uint8_t> data,
                            std::chrono::milliseconds timeLimit) {
  // The kernel only reads the data of this direction; its interface has one pointer for both.
  void* source = const_cast<uint8_t*>(data.data());
  const int direction = data.empty() ? SG_DXFER_NONE : SG_DXFER_TO_DEV;
  return execute(commandBlock, {source, data.size(), direction}, O_RDWR, timeLimit);
}

bool SgIoTransport::refusesExclusiveAccess() const {
  const int descriptor = open(devicePath_.c_str(), O_RDONLY | O_NONBLOCK | O_EXCL | O_CLOEXEC);
  if (descriptor >= 0) close(descriptor);
  return descriptor < 0;
}

Answer SgIoTransport::execute(std::span<const uint8_t> commandBlock, const Transfer& transfer,
                              int access, std::chrono::milliseconds timeLimit) const {
  if (commandBlock.empty() || commandBlock.size() > kLongestCommandBlock) {
    return unreachable(EINVAL);
  }
  const int descriptor = openNode(devicePath_, access);
  if (descriptor < 0) return unreachable(errno);

  std::array<uint8_t, kLongestCommandBlock> command{};
  std::copy(commandBlock.begin(), commandBlock.end(), command.begin());
  std::array<uint8_t, 64> sense{};
  sg_io_hdr_t header{};
  header.interface_id = 'S';
  header.dxfer_direction = transfer.direction;
  header.cmdp = command.data();
  header.cmd_len = static_cast<unsigned char>(commandBlock.size());
  header.sbp = sense.data();
  header.mx_sb_len = sense.size();
  header.dxferp = transfer.data;
  header.dxfer_len = static_cast<unsigned>(transfer.size);
  header.timeout = static_cast<unsigned>(timeLimit.count());
  const int result = ioctl(descriptor, SG_IO, &header);
  const int errorNumber = errno;
  close(descriptor);
  return result == 0 ? answerFrom(header, sense) : unreachable(errorNumber);
}

}  // namespace kelvane::mmc
