// SPDX-License-Identifier: GPL-2.0-or-later
//
// burn_starter DISC IMAGE: an application that starts a burn, prints a line once the disc is being
// written, and then waits to be killed, which its parent's end does too.
#include <sys/prctl.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdio>

#include "burn/burn_properties.h"
#include "burn/producer.h"
#include "platform/recording/dr_burn.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive_registry.h"

using namespace kelvane;

namespace {

void announce(const Notification& notification) {
  const auto* status = std::any_cast<DRBurnStatus>(&notification.userInfo);
  if (status->DRStatusStateKey == DRStatusStateTrackWrite) {
    std::puts("writing");
    std::fflush(stdout);
  }
  if (status->DRStatusStateKey == DRStatusStateFailed) QCoreApplication::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  QCoreApplication application(argc, argv);
  if (argc != 3) return 2;
  DriveRegistry::shared().setRealDrives(DriveRegistry::RealDrives::Excluded);
  std::string error;
  DRDevice* device = DriveRegistry::shared().addEmulatedDrive(argv[1], &error);
  if (device == nullptr) return 2;
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      &application, announce, DRBurnStatusChangedNotification, nullptr);
  auto producer = std::make_unique<Producer>();
  producer->setFilePath(argv[2]);
  const auto burn = DRBurn::burnForDevice(device);
  burn->setAppendable(true);
  burn->writeLayout(std::make_unique<DRTrack>(std::move(producer)));
  return QCoreApplication::exec();
}
