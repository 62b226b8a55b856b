// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <string>

namespace kelvane {

/// What decides whether this process may use a device node, and what its user can be told.
struct NodeAccess {
  bool exists = false;
  bool isUsable = false;        ///< For reading and writing.
  bool groupIsAllowed = false;  ///< The node's group may read and write it.
  bool joinsAtNextLogin =
      false;          ///< The user is in that group, but this session does not know yet.
  std::string group;  ///< By name, or by number where it has none.
  std::string user;
};

/// Looks at the node at `path`, following links. Opens nothing.
NodeAccess accessToNode(const std::string& path);

/// Says in one or two sentences for the user what is in the way of reading and writing the node at
/// `path`, and what helps; empty where nothing is. `udevRule` is a rule that gives the access which
/// is usual for such a node.
std::string describeMissingAccess(const std::string& path, const NodeAccess& access,
                                  const std::string& udevRule);

}  // namespace kelvane
