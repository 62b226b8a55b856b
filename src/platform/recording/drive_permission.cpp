// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_permission.h"

#include "platform/foundation/node_access.h"

namespace kelvane {
namespace {

constexpr char kUsualRule[] =
    R"(SUBSYSTEM=="block", KERNEL=="sr[0-9]*", GROUP="cdrom", MODE="0660")";

}  // namespace

std::string whyDriveIsClosed(const std::string& node) {
  return describeMissingAccess(node, accessToNode(node), kUsualRule);
}

}  // namespace kelvane
