// SPDX-License-Identifier: GPL-2.0-or-later
#include <linux/cdrom.h>

#include <array>
#include <cerrno>

#include "virtualdrive/big_endian.h"
#include "virtualdrive/media/medium_rules.h"
#include "virtualdrive/msf.h"
#include "virtualdrive/shim/controls.h"

namespace kelvane::virtualdrive::shim {
namespace {

/// Sends a command block; a refusal becomes the errno that the kernel would give.
template <std::size_t Size>
int send(const ShownDrive& shown, const std::array<std::uint8_t, Size>& block,
         std::span<std::uint8_t> dataIn = {}) {
  const auto result = shown.drive().execute(block, dataIn, {});
  if (result.good()) return 0;
  if (result.sense == kTrayOpen || result.sense == kMediumMayHaveChanged) return -ENOMEDIUM;
  return result.sense == kRemovalPrevented ? -EBUSY : -EIO;
}

int startStop(const ShownDrive& shown, std::uint8_t action) {
  return send(shown, std::array<std::uint8_t, 6>{0x1B, 0, 0, 0, action, 0});
}

int lockDoor(const ShownDrive& shown, bool lock) {
  return send(shown, std::array<std::uint8_t, 6>{0x1E, 0, 0, 0,
                                                 lock ? std::uint8_t{1} : std::uint8_t{0}, 0});
}

void putAddress(cdrom_addr* address, std::uint8_t format, Lba lba) {
  if (format == CDROM_LBA) {
    address->lba = lba;
    return;
  }
  const auto time = toMsf(lba);
  address->msf = {time.minute, time.second, time.frame};
}

/// READ TOC as the kernel sends it; a zero where there is no such entry.
template <std::size_t Size>
std::array<std::uint8_t, Size> readToc(const ShownDrive& shown, std::uint8_t format,
                                       std::uint8_t track) {
  std::array<std::uint8_t, Size> toc{};
  const std::array<std::uint8_t, 10> block{0x43, 0, format, 0, 0, 0, track, 0, Size, 0};
  // A change of the medium is told once, in place of the answer.
  if (send(shown, block, toc) == 0 || send(shown, block, toc) == 0) return toc;
  return {};
}

int readTocHeader(const ShownDrive& shown, cdrom_tochdr* header) {
  const auto toc = readToc<4>(shown, 0, 0);
  if (toc[2] == 0) return -EIO;
  header->cdth_trk0 = toc[2];
  header->cdth_trk1 = toc[3];
  return 0;
}

int readTocEntry(const ShownDrive& shown, cdrom_tocentry* entry) {
  const auto toc = readToc<12>(shown, 0, entry->cdte_track);
  if (toc[2] == 0) return entry->cdte_track == CDROM_LEADOUT ? -EIO : -EINVAL;
  entry->cdte_adr = (toc[5] >> 4) & 0x0F;
  entry->cdte_ctrl = toc[5] & 0x0F;
  entry->cdte_datamode = 1;
  putAddress(&entry->cdte_addr, entry->cdte_format, static_cast<Lba>(read32(toc, 8)));
  return 0;
}

int lastSession(const ShownDrive& shown, cdrom_multisession* session) {
  const auto toc = readToc<12>(shown, 1, 0);
  if (toc[2] == 0) return -EIO;
  session->xa_flag = toc[3] > 1 ? 1 : 0;
  putAddress(&session->addr, session->addr_format, static_cast<Lba>(read32(toc, 8)));
  return 0;
}

int nextWritable(const ShownDrive& shown, long* address) {
  std::array<std::uint8_t, 36> information{};
  const std::array<std::uint8_t, 10> block{0x52, 1, 0, 0, 0, 0xFF, 0, 0, information.size(), 0};
  if (const int result = send(shown, block, information); result != 0) return result;
  *address = static_cast<std::int32_t>(read32(information, 12));
  return 0;
}

int discStatus(const ShownDrive& shown) {
  std::string error;
  const auto disc = shown.drive().inspect(&error);
  if (!shown.drive().mediaLoaded()) return CDS_NO_DISC;
  return disc && readableEnd(*disc) > 0 ? CDS_DATA_1 : CDS_NO_INFO;
}

}  // namespace

int controlCdRom(const ShownDrive& shown, unsigned long request, void* argument) {
  switch (request) {
    case CDROM_DRIVE_STATUS:
      return shown.drive().mediaLoaded() ? CDS_DISC_OK : CDS_TRAY_OPEN;
    case CDROM_DISC_STATUS:
      return discStatus(shown);
    case CDROM_MEDIA_CHANGED:
    case CDROM_SET_OPTIONS:
    case CDROM_CLEAR_OPTIONS:
    case CDROMRESET:
      return 0;
    case CDROM_CHANGER_NSLOTS:
      return 1;
    case CDROM_GET_CAPABILITY:
      return CDC_CLOSE_TRAY | CDC_OPEN_TRAY | CDC_LOCK | CDC_SELECT_SPEED | CDC_MULTI_SESSION |
             CDC_MEDIA_CHANGED | CDC_GENERIC_PACKET | CDC_CD_R | CDC_CD_RW | CDC_DVD | CDC_DVD_R |
             CDC_DRIVE_STATUS;
    case CDROM_SELECT_SPEED:
      return 0;
    case CDROMEJECT:
      return startStop(shown, 0x02);
    case CDROMCLOSETRAY:
      return startStop(shown, 0x03);
    case CDROMSTART:
    case CDROMSTOP:
      return 0;
    case CDROM_LOCKDOOR:
      return lockDoor(shown, argument != nullptr);
    default:
      break;
  }
  if (argument == nullptr) return -ENOTTY;
  switch (request) {
    case CDROMREADTOCHDR:
      return readTocHeader(shown, static_cast<cdrom_tochdr*>(argument));
    case CDROMREADTOCENTRY:
      return readTocEntry(shown, static_cast<cdrom_tocentry*>(argument));
    case CDROMMULTISESSION:
      return lastSession(shown, static_cast<cdrom_multisession*>(argument));
    case CDROM_NEXT_WRITABLE:
      return nextWritable(shown, static_cast<long*>(argument));
    default:
      return -ENOTTY;
  }
}

}  // namespace kelvane::virtualdrive::shim
