// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

#include "overlayfs/change_count.h"
#include "overlayfs/overlay_changes.h"
#include "ui/burn_summary.h"

namespace kelvane {

class DRDevice;
struct RecordingRoom;
class VolumeServices;

/// The session in question: all that its burn would be given.
struct SurveySubject {
  std::string overlay;
  std::string hideList;
  /// The hidden mount of the disc; empty for a blank one.
  std::optional<std::string> disc;
  OverlayChanges changes;
  AppleDouble appleDouble = AppleDouble::Burned;
  /// Whether growisofs writes the session.
  enum class Road { CD, DVD } road = Road::CD;
  DRDevice* device = nullptr;         ///< Borrowed.
  VolumeServices* volumes = nullptr;  ///< Borrowed.
  std::string deviceName;             ///< By which mkisofs finds the drive.
  std::string volumeName;
  int64_t nominallyFree = 0;  ///< Bytes, by the volume's own count.
};

/// Finds out, on a thread of its own, what a burn would change, whether it fits, and what stands
/// against it, while the user is asked whether to burn.
///
/// It reads the overlay directory, the hide list, the hidden mount and the drive, and has mkisofs
/// compute the session; it writes nothing. Deleted on the main thread: its child and thread have
/// ended then, so that whoever burns finds everything free. What it has not reported by then is
/// never reported.
class BurnSurvey {
 public:
  /// Called on the main thread each time more is known, with all that is known.
  using Report = std::function<void(const BurnSummary& summary)>;

  BurnSurvey(SurveySubject subject, Report report);
  ~BurnSurvey();
  BurnSurvey(const BurnSurvey&) = delete;
  BurnSurvey& operator=(const BurnSurvey&) = delete;

 private:
  void run(const std::stop_token& stop);
  bool countItems(const std::stop_token& stop);
  bool findHiddenItems(const std::stop_token& stop);
  void measure(const std::stop_token& stop);
  void take(int64_t blocks, const RecordingRoom& room);
  void blameDisc(const RecordingRoom& room);
  void say() const;

  const SurveySubject subject_;
  std::shared_ptr<Report> report_;      // The main thread's.
  const std::weak_ptr<Report> wanted_;  // For what is queued on the main thread.
  BurnSummary summary_;                 // The survey's own thread's.
  std::jthread thread_;
};

}  // namespace kelvane
