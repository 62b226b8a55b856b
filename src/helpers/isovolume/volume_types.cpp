// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/volume_types.h"

#include <cerrno>

namespace kelvane::isovolume {

int errorNumber(Status status) {
  switch (status) {
    case Status::ok:
      return 0;
    case Status::notFound:
      return ENOENT;
    case Status::notADirectory:
      return ENOTDIR;
    case Status::notAFile:
      return EISDIR;
    case Status::notALink:
      return EINVAL;
    case Status::damaged:
      return EIO;
    case Status::loop:
      return ELOOP;
  }
  return EIO;
}

}  // namespace kelvane::isovolume
