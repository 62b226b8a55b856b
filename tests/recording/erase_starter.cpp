// SPDX-License-Identifier: GPL-2.0-or-later
//
// erase_starter DISC: an application that starts an erase, prints a line once the recorder has
// reported, and then waits to be killed, which its parent's end does too.
#include <sys/prctl.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdio>

#include "platform/recording/dr_device.h"
#include "platform/recording/dr_erase.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive_registry.h"

using namespace kelvane;

int main(int argc, char** argv) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  QCoreApplication application(argc, argv);
  if (argc != 2) return 2;
  DriveRegistry::shared().setRealDrives(DriveRegistry::RealDrives::Excluded);
  std::string error;
  DRDevice* device = DriveRegistry::shared().addEmulatedDrive(argv[1], &error);
  if (device == nullptr) return 2;
  const auto erase = DRErase::eraseForDevice(device);
  bool announced = false;
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      &application,
      [&announced](const Notification& notification) {
        const auto* status = std::any_cast<DREraseStatus>(&notification.userInfo);
        if (status->DRStatusStateKey == DRStatusStateFailed) QCoreApplication::exit(1);
        if (std::exchange(announced, true)) return;
        std::puts("erasing");
        std::fflush(stdout);
      },
      DREraseStatusChangedNotification, nullptr);
  erase->start();
  return QCoreApplication::exec();
}
