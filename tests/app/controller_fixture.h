// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "app/kv_app_delegate.h"
#include "app/kv_controller.h"
#include "app/recording_outlets.h"
#include "foundation/application_fixture.h"
#include "foundation/turn_until.h"
#include "media/fake_volume_services.h"
#include "media/recorded_log.h"
#include "platform/foundation/main_thread.h"
#include "volumes/fake_device.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::test {

/// A drive that notes what is asked of its tray and its access in the window's list.
class NotingDevice : public FakeDevice {
 public:
  NotingDevice(const std::string& bsdName, RecordingOutlets& window)
      : FakeDevice(bsdName), window_(window) {}

  void acquireMediaReservation() override { window_.note("reserve"); }
  bool acquireExclusiveAccess() override {
    window_.note("acquire");
    return true;
  }
  void releaseExclusiveAccess() override { window_.note("release"); }
  bool ejectMedia() override {
    window_.note("eject");
    return true;
  }

 private:
  RecordingOutlets& window_;
};

/// A controller over a recording window, drives whose answers the test sets, and a mount table that
/// the test writes. No text is translated: a text is its key.
class ControllerFixture : public ApplicationFixture {
 protected:
  ControllerFixture() {
    services_.devices = [this] { return std::vector<DRDevice*>(devices_); };
    services_.volumes = &volumes_;
    services_.userFileSystemIsAvailable = [this](std::string* reason) {
      *reason = "no /dev/fuse";
      return userFileSystemIsAvailable_;
    };
    services_.discIsOpened = [this](const std::string& name) { window_.note("opened " + name); };
    services_.discIsClosed = [this](const std::string& name) { window_.note("closed " + name); };
    services_.discWillBeEjected = [this](const std::string& name) {
      window_.note("will eject " + name);
    };
    services_.holdOffInterruptions = [this](const std::string& why) {
      reasonsToStayAwake_.push_back(why);
      return awake_;
    };
    services_.sleep = [](std::chrono::milliseconds) {};
  }

  /// Lets everything happen that is queued already.
  void turn() {
    bool reached = false;
    performOnMainThread([&reached] { reached = true; });
    turnUntil([&reached] { return reached; });
  }

  /// The calls since the last time.
  std::vector<std::string> newCalls() { return std::exchange(window_.calls, {}); }

  /// The calls without the animation of the bar that a burn asks for beforehand, by the clock: it
  /// comes only where the burn takes that long. One that is asked for at once follows a change of
  /// the bar.
  static std::vector<std::string> withoutDelayedAnimation(std::vector<std::string> calls) {
    for (size_t i = calls.size(); i-- > 1;) {
      if (calls[i] == "bar animates" && calls[i - 1] != "bar indeterminate") {
        calls.erase(calls.begin() + static_cast<std::ptrdiff_t>(i));
      }
    }
    return calls;
  }

  TemporaryPrefix prefix_;
  RecordingOutlets window_;
  FakeVolumeServices volumes_;
  NotingDevice device_{"kv0", window_};
  std::vector<DRDevice*> devices_;
  bool userFileSystemIsAvailable_ = true;
  std::vector<std::string> reasonsToStayAwake_;
  std::shared_ptr<void> awake_ = std::make_shared<int>();  ///< Shared while it is asked for.
  ControllerServices services_;
  KVController controller_{window_, services_};
  KVAppDelegate delegate_{controller_, window_};
  RecordedLog log_;
};

}  // namespace kelvane::test
