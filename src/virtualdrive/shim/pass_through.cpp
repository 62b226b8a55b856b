// SPDX-License-Identifier: GPL-2.0-or-later
#include <scsi/sg.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "virtualdrive/shim/controls.h"

namespace kelvane::virtualdrive::shim {
namespace {

constexpr unsigned char kCheckCondition = 0x02;
constexpr unsigned char kMaskedCheckCondition = 0x01;
constexpr unsigned short kDriverSense = 0x08;

bool isUsable(const sg_io_hdr& header) {
  return header.interface_id == 'S' && header.cmdp != nullptr && header.cmd_len >= 6 &&
         header.cmd_len <= 16 && header.iovec_count == 0 &&
         (header.dxfer_len == 0 || header.dxferp != nullptr);
}

void putSense(sg_io_hdr* header, const Sense& sense) {
  header->status = kCheckCondition;
  header->masked_status = kMaskedCheckCondition;
  header->driver_status = kDriverSense;
  header->info |= SG_INFO_CHECK;
  if (header->sbp == nullptr) return;
  const auto bytes = fixedFormat(sense);
  const auto count = std::min<std::size_t>(bytes.size(), header->mx_sb_len);
  std::memcpy(header->sbp, bytes.data(), count);
  header->sb_len_wr = static_cast<unsigned char>(count);
}

}  // namespace

int passThrough(const ShownDrive& shown, void* argument) {
  auto* header = static_cast<sg_io_hdr*>(argument);
  if (header == nullptr) return -EFAULT;
  if (!isUsable(*header)) return -EINVAL;
  const bool sends = header->dxfer_direction == SG_DXFER_TO_DEV;
  const bool receives = header->dxfer_direction == SG_DXFER_FROM_DEV ||
                        header->dxfer_direction == SG_DXFER_TO_FROM_DEV;
  auto* data = static_cast<std::uint8_t*>(header->dxferp);
  const std::size_t length = header->dxfer_len;
  const std::span<std::uint8_t> dataIn(data, receives ? length : 0);
  const std::span<const std::uint8_t> dataOut(data, sends ? length : 0);

  const auto result = shown.drive().execute({header->cmdp, header->cmd_len}, dataIn, dataOut);
  if (result.gone) return -ENODEV;
  header->status = header->masked_status = header->msg_status = 0;
  header->host_status = header->driver_status = 0;
  header->sb_len_wr = 0;
  header->info = 0;
  header->duration = 0;
  header->resid = static_cast<int>(length - std::min(length, result.transferred));
  if (!result.good()) putSense(header, result.sense);
  return 0;
}

}  // namespace kelvane::virtualdrive::shim
