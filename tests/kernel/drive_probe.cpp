// SPDX-License-Identifier: GPL-2.0-or-later
//
// drive_probe kernel|program /dev/srN: says as one JSON object what is in a drive, as the kernel
// knows it (the ioctls of linux/cdrom.h), or as this program's own way through SG_IO finds it.
// drive_probe eject|load /dev/srN: has the kernel open or close the tray.

#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "platform/recording/media_state.h"
#include "platform/recording/mmc/inquiry.h"
#include "platform/recording/mmc/sg_io_transport.h"
#include "platform/recording/mmc/unit_ready.h"
#include "virtualdrive/file_descriptor.h"

namespace {

using nlohmann::json;
using namespace kelvane;

json tocOf(int drive) {
  cdrom_tochdr header{};
  if (ioctl(drive, CDROMREADTOCHDR, &header) != 0) return nullptr;
  json tracks = json::array();
  const auto address = [drive](int number) {
    cdrom_tocentry entry{};
    entry.cdte_track = static_cast<__u8>(number);
    entry.cdte_format = CDROM_LBA;
    return ioctl(drive, CDROMREADTOCENTRY, &entry) == 0 ? json(entry.cdte_addr.lba) : json();
  };
  for (int number = header.cdth_trk0; number <= header.cdth_trk1; ++number) {
    tracks.push_back(address(number));
  }
  return {{"tracks", tracks}, {"leadOut", address(CDROM_LEADOUT)}};
}

json lastSessionOf(int drive) {
  cdrom_multisession session{};
  session.addr_format = CDROM_LBA;
  if (ioctl(drive, CDROMMULTISESSION, &session) != 0) return nullptr;
  return session.addr.lba;
}

virtualdrive::FileDescriptor openDrive(const std::string& path) {
  virtualdrive::FileDescriptor drive(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!drive) std::perror(path.c_str());
  return drive;
}

int moveTray(const std::string& path, unsigned long how) {
  const auto drive = openDrive(path);
  if (drive && ioctl(drive.get(), how) == 0) return EXIT_SUCCESS;
  if (drive) std::perror(path.c_str());
  return EXIT_FAILURE;
}

int whatTheKernelKnows(const std::string& path) {
  const auto drive = openDrive(path);
  if (!drive) return EXIT_FAILURE;
  unsigned long long bytes = 0;
  long lastWritten = -1;
  const bool knowsSize = ioctl(drive.get(), BLKGETSIZE64, &bytes) == 0;
  const bool knowsLast = ioctl(drive.get(), CDROM_LAST_WRITTEN, &lastWritten) == 0;
  const auto capability = static_cast<unsigned>(ioctl(drive.get(), CDROM_GET_CAPABILITY, nullptr));
  const json answer{
      {"driveStatus", ioctl(drive.get(), CDROM_DRIVE_STATUS, CDSL_CURRENT)},
      {"discStatus", ioctl(drive.get(), CDROM_DISC_STATUS, nullptr)},
      {"mediaChanged", ioctl(drive.get(), CDROM_MEDIA_CHANGED, CDSL_CURRENT)},
      {"writesCD", (capability & CDC_CD_R) != 0},
      {"writesCDRW", (capability & CDC_CD_RW) != 0},
      {"readsDVD", (capability & CDC_DVD) != 0},
      {"writesDVD", (capability & CDC_DVD_R) != 0},
      {"sectors", knowsSize ? json(bytes / 2048) : json()},
      {"lastWritten", knowsLast ? json(lastWritten) : json()},
      {"lastSession", lastSessionOf(drive.get())},
      {"toc", tocOf(drive.get())},
  };
  std::puts(answer.dump().c_str());
  return EXIT_SUCCESS;
}

template <typename T>
json orNull(const std::optional<T>& value) {
  return value ? json(*value) : json();
}

json tracksOf(const DRDeviceStatus& status) {
  if (!status.DRDeviceMediaInfoKey) return nullptr;
  json tracks = json::array();
  for (const auto number : status.DRDeviceMediaInfoKey->DRDeviceTrackRefsKey) {
    const auto& info = status.DRDeviceMediaInfoKey->DRDeviceTrackInfoKey.at(number);
    tracks.push_back({{"number", number},
                      {"session", info.DRTrackSessionNumberKey},
                      {"start", orNull(info.DRTrackStartAddressKey)},
                      {"length", orNull(info.DRTrackLengthKey)}});
  }
  return tracks;
}

int whatThisProgramFinds(const std::string& path) {
  mmc::SgIoTransport transport(path);
  const auto inquiry = mmc::readInquiry(transport);
  if (!inquiry) {
    std::fprintf(stderr, "%s does not answer\n", path.c_str());
    return EXIT_FAILURE;
  }
  const auto readiness = mmc::testUnitReady(transport);
  const MediaState state = readMediaState(transport);
  const json answer{
      {"name", inquiry->vendor + " " + inquiry->product},
      {"ready", readiness == mmc::Readiness::Ready},
      {"present", state.present},
      {"blank", state.blank},
      {"appendable", state.appendable},
      {"profile", static_cast<int>(state.profile)},
      {"sessions", state.sessions},
      {"nextWritableAddress", orNull(state.nextWritableAddress)},
      {"tracks", tracksOf(readDeviceStatus(transport))},
  };
  std::puts(answer.dump().c_str());
  return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** words) {
  const std::string_view whom = count == 3 ? words[1] : "";
  if (whom == "kernel") return whatTheKernelKnows(words[2]);
  if (whom == "program") return whatThisProgramFinds(words[2]);
  if (whom == "eject") return moveTray(words[2], CDROMEJECT);
  if (whom == "load") return moveTray(words[2], CDROMCLOSETRAY);
  std::fputs("drive_probe kernel|program|eject|load /dev/srN\n", stderr);
  constexpr int kWrongArguments = 2;
  return kWrongArguments;
}
