// SPDX-License-Identifier: GPL-2.0-or-later
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/foundation/paths.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/drive.h"
#include "platform/volumes/desktop_mounts.h"
#include "platform/volumes/unmount.h"
#include "platform/volumes/volume_services.h"

namespace kelvane {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The program that mounts, until its part is done.
class IsomountRequest : public MountRequest {
 public:
  IsomountRequest(std::unique_ptr<ChildTask> task, std::string bsdName)
      : task_(std::move(task)), bsdName_(std::move(bsdName)) {}

  // The volume may answer a moment before the program that mounted it has ended; it is not to be
  // killed in that moment.
  ~IsomountRequest() override {
    constexpr int kGraceMilliseconds = 2000;
    if (!task_->waitBlocking(kGraceMilliseconds) || task_->terminationStatus() == 0) return;
    systemLog("mounting %@ failed: %@", bsdName_, task_->readStandardErrorToEnd());
  }

 private:
  std::unique_ptr<ChildTask> task_;
  std::string bsdName_;
};

bool isIsoVolumeMountedAt(const std::string& resolvedPath) {
  const std::vector<MountTableLine> table = readMountTable();
  return std::any_of(table.begin(), table.end(), [&](const MountTableLine& line) {
    return line.mountedOn == resolvedPath && fileSystemType(line.kernelType) == "cd9660";
  });
}

class SystemVolumeServices : public VolumeServices {
 public:
  std::vector<std::string> visibleVolumePaths() override {
    const std::string folder = paths::volumesDirectory();
    std::vector<std::string> volumes;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
      volumes.push_back(entry->path().string());
    }
    for (std::string& mountPoint :
         desktopDiscMounts(readMountTable(), resolvedMountPoint(folder),
                           resolvedMountPoint(paths::hiddenMountPoint()))) {
      volumes.push_back(std::move(mountPoint));
    }
    return volumes;
  }

  std::optional<MountTableEntry> mountTableEntryOf(const std::string& path) override {
    return mountTableEntry(path);
  }

  std::optional<std::string> volumeAtPath(const std::string& path) override {
    if (!isMountPoint(path)) return std::nullopt;
    return resolvedMountPoint(path);
  }

  int unmountVolumeSync(const std::string& volume) override {
    const int status = unmountAtPath(volume, UnmountManner::WhenFree);
    const std::string parent = std::filesystem::path(volume).parent_path().string();
    if (status == kUnmountDone && parent == resolvedMountPoint(paths::volumesDirectory())) {
      rmdir(volume.c_str());
    }
    return status;
  }

  // A desktop may be faster than this, so what it has mounted meanwhile is unmounted, too.
  void keepOthersFromMounting(const DRDevice& device) override {
    constexpr int kMostAttempts = 50;
    constexpr milliseconds kPause{100};
    Drive* drive = device.drive();
    if (drive == nullptr) return;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
      if (drive->keepOthersFromMounting()) return;
      for (const MountTableLine& line : readMountTable()) {
        if (line.mountedFrom == drive->identity().programPath) {
          unmountAtPath(line.mountedOn, UnmountManner::WhenFree);
        }
      }
      if (drive->keepOthersFromMounting()) return;
      sleep(kPause);
    }
    systemLog("%@ may be mounted by others while it is open.", drive->identity().programPath);
  }

  void letOthersMount(const DRDevice& device) override {
    if (Drive* drive = device.drive()) drive->letOthersMount();
  }

  void createDirectory(const std::string& path) override {
    std::error_code failure;
    std::filesystem::create_directories(path, failure);
  }

  std::unique_ptr<MountRequest> requestMount(const DiscMount& mount) override {
    std::unique_ptr<ChildTask> task = startMountingDisc(mount);
    if (task == nullptr) return nullptr;
    return std::make_unique<IsomountRequest>(std::move(task), mount.bsdName);
  }

  void sleep(milliseconds duration) override { std::this_thread::sleep_for(duration); }

  // poll(2) reports each change of the mount table as an exceptional condition of its file.
  void sleepUnlessMounted(milliseconds duration, const std::string& mountPoint) override {
    const std::string resolved = resolvedMountPoint(mountPoint);
    const Clock::time_point end = Clock::now() + duration;
    const int table = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    while (!isIsoVolumeMountedAt(resolved)) {
      const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
      if (left <= milliseconds(0)) break;
      pollfd change = {.fd = table, .events = POLLPRI, .revents = 0};
      poll(&change, 1, static_cast<int>(left.count()));
    }
    if (table >= 0) close(table);
  }
};

}  // namespace

VolumeServices& VolumeServices::system() {
  static SystemVolumeServices services;
  return services;
}

}  // namespace kelvane
