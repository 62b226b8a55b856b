// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace kelvane {

/// Listens to what is told of optical drives on the machine's device event channel (libudev):
/// plugged in and out, a disc loaded, changed or taken out, the eject button pressed.
///
/// With a running udevd its own events are heard, which come once the rules have been applied and
/// the device node can be used; the kernel then watches the media of all drives by itself. Without
/// one only drives that come and go are told of reliably, and `tellsOfMedia` is false. Main thread
/// only; needs an event loop.
class DriveEvents {
 public:
  enum class Channel {
    Udev,
    Kernel,
  };

  using NameHandler = std::function<void(const std::string& name)>;

  /// The channel that can be relied on here.
  static Channel systemChannel();

  /// Whether udev has finished with the block device of this name ("sr0"), so that its node has its
  /// owner and rights. True where no udevd runs, and for a device that is not there.
  static bool isSettled(const std::string& name);

  /// Calls `handler`, from the event loop, with the kernel name of each block device that an event
  /// came of and whose name begins with `prefix`; with an empty name where events were lost, so
  /// that any of them may have news. Null where the channel cannot be listened to. Where a rule of
  /// ours has kept a tray shut whose button was pressed, `trayKeptShut` is called with the drive's
  /// name.
  static std::unique_ptr<DriveEvents> listen(Channel channel, const std::string& prefix,
                                             NameHandler handler, NameHandler trayKeptShut = {});
  ~DriveEvents();
  DriveEvents(const DriveEvents&) = delete;
  DriveEvents& operator=(const DriveEvents&) = delete;

  /// Whether a change of a disc is told of too.
  bool tellsOfMedia() const { return channel_ == Channel::Udev; }

 private:
  class Connection;

  DriveEvents(Channel channel, std::unique_ptr<Connection> connection);

  Channel channel_;
  std::unique_ptr<Connection> connection_;
};

}  // namespace kelvane
