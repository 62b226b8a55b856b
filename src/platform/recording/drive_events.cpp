// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_events.h"

#include <libudev.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <cerrno>
#include <set>
#include <string_view>
#include <utility>

namespace kelvane {
namespace {

constexpr char kUdevControl[] = "/run/udev/control";
// What the rule adds to the event (packaging/kelvanefs.rules).
constexpr char kTrayKeptShut[] = "KELVANEFS_TRAY_KEPT_SHUT";

template <auto release>
struct Release {
  template <typename Handle>
  void operator()(Handle* handle) const {
    release(handle);
  }
};
using UdevContext = std::unique_ptr<udev, Release<udev_unref>>;
using UdevMonitor = std::unique_ptr<udev_monitor, Release<udev_monitor_unref>>;
using UdevDevice = std::unique_ptr<udev_device, Release<udev_device_unref>>;

UdevMonitor openMonitor(udev* context, DriveEvents::Channel channel) {
  const char* name = channel == DriveEvents::Channel::Udev ? "udev" : "kernel";
  UdevMonitor monitor(udev_monitor_new_from_netlink(context, name));
  if (!monitor) return nullptr;
  if (udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "block", "disk") < 0 ||
      udev_monitor_enable_receiving(monitor.get()) < 0) {
    return nullptr;
  }
  return monitor;
}

}  // namespace

class DriveEvents::Connection {
 public:
  Connection(UdevContext context, UdevMonitor monitor, std::string prefix, NameHandler handler,
             NameHandler trayKeptShut)
      : context_(std::move(context)),
        monitor_(std::move(monitor)),
        prefix_(std::move(prefix)),
        handler_(std::move(handler)),
        trayKeptShut_(std::move(trayKeptShut)),
        readable_(udev_monitor_get_fd(monitor_.get()), QSocketNotifier::Read) {
    QObject::connect(&readable_, &QSocketNotifier::activated, [this] { receive(); });
  }

 private:
  // The monitor's socket does not block, so that all that has come can be taken.
  void receive() {
    std::set<std::string> drives;
    errno = 0;
    while (const UdevDevice device{udev_monitor_receive_device(monitor_.get())}) {
      const char* name = udev_device_get_sysname(device.get());
      if (name == nullptr || !std::string_view(name).starts_with(prefix_)) continue;
      drives.insert(name);
      if (trayKeptShut_ && udev_device_get_property_value(device.get(), kTrayKeptShut) != nullptr) {
        trayKeptShut_(name);
      }
    }
    if (errno == ENOBUFS) drives.insert("");  // More has come than the socket holds.
    for (const std::string& drive : drives) handler_(drive);
  }

  UdevContext context_;
  UdevMonitor monitor_;
  std::string prefix_;
  NameHandler handler_;
  NameHandler trayKeptShut_;
  QSocketNotifier readable_;
};

DriveEvents::Channel DriveEvents::systemChannel() {
  return access(kUdevControl, F_OK) == 0 ? Channel::Udev : Channel::Kernel;
}

bool DriveEvents::isSettled(const std::string& name) {
  if (systemChannel() == Channel::Kernel) return true;
  const UdevContext context(udev_new());
  if (!context) return true;
  const UdevDevice device{
      udev_device_new_from_subsystem_sysname(context.get(), "block", name.c_str())};
  return !device || udev_device_get_is_initialized(device.get()) != 0;
}

std::unique_ptr<DriveEvents> DriveEvents::listen(Channel channel, const std::string& prefix,
                                                 NameHandler handler, NameHandler trayKeptShut) {
  UdevContext context(udev_new());
  if (!context) return nullptr;
  UdevMonitor monitor = openMonitor(context.get(), channel);
  if (!monitor) return nullptr;
  auto connection = std::make_unique<Connection>(std::move(context), std::move(monitor), prefix,
                                                 std::move(handler), std::move(trayKeptShut));
  return std::unique_ptr<DriveEvents>(new DriveEvents(channel, std::move(connection)));
}

DriveEvents::DriveEvents(Channel channel, std::unique_ptr<Connection> connection)
    : channel_(channel), connection_(std::move(connection)) {}

DriveEvents::~DriveEvents() = default;

}  // namespace kelvane
