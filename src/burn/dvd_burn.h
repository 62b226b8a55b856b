// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "burn/dvd_burn_parameters.h"
#include "burn/growisofs_remarks.h"
#include "platform/volumes/volume_services.h"

namespace kelvane {

/// growisofs has ended. Posted on the burn's own thread; the object is the DVDBurn.
inline constexpr char kKelvaneDidFinishDVD[] = "KelvaneDidFinishDVD";

/// Writes one session to a DVD with growisofs, on a thread of its own, and moves the burn progress
/// bar meanwhile.
///
/// Made, started once and deleted on the main thread; deleting waits for growisofs's end. Whether
/// the session is on the disc is judged by `burnErrors` alone, once "KelvaneDidFinishDVD" has been
/// posted: growisofs's exit status says nothing.
class DVDBurn {
 public:
  /// `services` unmounts the disc before growisofs starts; borrowed.
  explicit DVDBurn(DVDBurnParameters parameters,
                   VolumeServices& services = VolumeServices::system());
  ~DVDBurn();
  DVDBurn(const DVDBurn&) = delete;
  DVDBurn& operator=(const DVDBurn&) = delete;

  /// Runs `performDVDBurn` on a new thread.
  void startDVDBurnInOwnThread();

  /// Unmounts the disc, keeps others from mounting it, runs growisofs to its end and posts
  /// "KelvaneDidFinishDVD". growisofs takes the drive for itself a moment after it was started; a
  /// desktop that mounts the disc in that moment is answered with another attempt.
  void performDVDBurn();

  /// What growisofs said that begins with ":-(". Written on the burn's thread only; to be read
  /// elsewhere once the end has been posted.
  const std::vector<std::string>& burnErrors() const { return burnErrors_; }

  /// What growisofs and the image builder said that may be of interest to people; decides nothing.
  /// To be read as `burnErrors`.
  const GrowisofsRemarks& remarks() const { return remarks_; }

  /// Takes in a chunk of growisofs's standard error; GrowisofsChunk says what counts of it. On the
  /// burn's thread.
  void processStatus(std::string_view chunk);

  /// Shows the progress last seen on the bar, or that there is none to be told. Main thread.
  void updateProgressIndicator();

  /// The whole percents last seen, as growisofs aligns them (" 42"); empty where the last line told
  /// none. Any thread.
  std::optional<std::string> percentDoneString() const;
  void setPercentDoneString(const std::string& percent);

  /// The text after the last line feed of the last chunk. It is kept and never used. On the burn's
  /// thread.
  const std::string& lastIncompleteStatus() const { return lastIncompleteStatus_; }

 private:
  void takeDiscFromOthers();
  void runGrowisofs();
  bool hasLostDiscToOthers() const;
  void forgetAttempt();
  // Each line examined begins with this: only one that tells a percentage sets it again.
  void forgetPercentDone();

  const DVDBurnParameters parameterDict_;
  std::string lastIncompleteStatus_;
  ProgressIndicator* const progressIndicator_;
  std::vector<std::string> burnErrors_;
  DRDevice* const currentDevice_;
  mutable std::mutex percentDoneStringMutex_;
  std::optional<std::string> percentDoneString_;  // Guarded by the mutex above.

  GrowisofsRemarks remarks_;

  VolumeServices& services_;
  // Queued updates hold it weakly: they come to nothing once the burn is gone.
  std::shared_ptr<DVDBurn*> self_;
  std::thread thread_;
};

}  // namespace kelvane
