// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/sense_data.h"

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {

Sense parseSenseData(std::span<const uint8_t> data) {
  const uint8_t responseCode = byteAt(data, 0) & 0x7F;
  Sense sense;
  if (responseCode == 0x70 || responseCode == 0x71) {
    sense.key = byteAt(data, 2) & 0x0F;
    sense.code = byteAt(data, 12);
    sense.qualifier = byteAt(data, 13);
  } else if (responseCode == 0x72 || responseCode == 0x73) {
    sense.key = byteAt(data, 1) & 0x0F;
    sense.code = byteAt(data, 2);
    sense.qualifier = byteAt(data, 3);
  }
  return sense;
}

}  // namespace kelvane::mmc
