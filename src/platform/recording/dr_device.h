// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/recording/dr_device_status.h"
#include "platform/recording/dr_media_types.h"
#include "platform/recording/drive_claim_handover.h"

namespace kelvane {

class Drive;

/// One optical drive, real or emulated; callers cannot tell which, and need not.
///
/// Every question is asked of the drive when it is put, except while a recording of ours runs on
/// it: then the drive is left alone and the answers are those of the moment before. A drive that
/// does not answer has no disc. Thread-safe. The devices belong to the DriveRegistry, live as long
/// as it does and keep their address; one whose drive has gone reports `isValid` false.
///
/// The operations are virtual only so that tests can put a drive of their own in place; the class
/// of every drive of the registry is DRDevice itself.
class DRDevice {
 public:
  explicit DRDevice(std::unique_ptr<Drive> drive);
  virtual ~DRDevice();
  DRDevice(const DRDevice&) = delete;
  DRDevice& operator=(const DRDevice&) = delete;

  /// Every drive: the emulated ones in the order in which they were added, then the real ones by
  /// name. Main thread. Borrowed.
  static std::vector<DRDevice*> devices();

  /// Whether a recording runs on the drive: one of this process, or (where it can be seen) one that
  /// another process started.
  virtual bool mediaIsBusy() const;
  /// False once the drive has been unplugged, or the folder of an emulated disc removed.
  virtual bool isValid() const;
  virtual bool mediaIsPresent() const;
  /// Whether the drive is taking a disc in, or otherwise not ready yet but about to be.
  virtual bool mediaIsTransitioning() const;
  /// Whether the drive can record CDs at all, whatever disc is in it.
  virtual bool writesCD() const;
  /// One of the constants DRDeviceMediaType…; empty without a disc or for a kind not known.
  virtual std::optional<std::string> mediaType() const;
  /// Whether nothing has been recorded on the disc. Of a DVD+RW, which drives call complete once it
  /// is formatted: whether nothing is found on it (overwritten_disc.h).
  virtual bool mediaIsBlank() const;
  /// Whether the disc can take a further session. A blank disc can; a closed one, and one whose
  /// last session was cut off and never finished, cannot.
  virtual bool mediaIsAppendable() const;
  /// Maker and model, as the drive gives them.
  virtual std::string displayName() const;
  /// The kernel's name of the drive ("sr0"); of an emulated one "kv0", "kv1" …
  virtual std::string bsdName() const;
  /// The drive's sysfs path, whose last component is the BSD name. An emulated drive has a path of
  /// the same shape that names no file.
  virtual std::string ioRegistryEntryPath() const;
  virtual DRDeviceStatus status() const;
  /// The blocks of 2048 bytes that a DVD which is written over at will has in all. Empty for other
  /// media, and where the drive does not say.
  virtual std::optional<uint32_t> formatCapacity() const;
  /// Tells the disc in the drive from others (media_identity.h). Empty where there is none, or it
  /// cannot be told now: whoever compares takes that for no difference.
  virtual std::string mediaIdentity() const;

  /// Asks that no other program takes the discs of this drive for itself. Nothing on Linux grants
  /// that, so it always succeeds without effect.
  virtual void acquireMediaReservation();
  /// Takes the drive for this process. False where another process has it. Idempotent; ended by
  /// `releaseExclusiveAccess` or the end of the process. The lock is advisory (flock on the
  /// emulated disc's folder or on the device node).
  virtual bool acquireExclusiveAccess();
  virtual void releaseExclusiveAccess();
  /// Opens the tray, whatever holds it shut. False where the drive refuses.
  virtual bool ejectMedia();
  /// Closes the tray. False where the drive refuses.
  virtual bool loadMedia();

  /// The folder of the disc in an emulated drive, absolute; empty for a real drive.
  virtual std::optional<std::string> emulatedDisc() const;

  /// The road to the drive, for those who record on it. Null only for a test's stand-in.
  virtual Drive* drive() const { return drive_.get(); }

  /// Marks the beginning and end of a recording by this process. Main thread; must be paired.
  void beginRecording();
  void endRecording();
  /// Keeps others from mounting the disc, where that is not so already and nobody has, and hands
  /// this on to the program that `task` is about to launch, which is to record on the drive. Any
  /// thread.
  [[nodiscard]] DriveClaimHandover handClaimOver(ChildTask& task);

 protected:
  /// For tests' stand-ins, which override what is asked of them.
  DRDevice();

 private:
  std::unique_ptr<Drive> drive_;
  std::atomic<int> recordings_{0};
};

}  // namespace kelvane
