// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>

#include "platform/recording/dr_track_producer.h"

namespace burn {
struct burn_source;
}  // namespace burn

namespace kelvane::recorder {

/// Gives back one of libburn's references to a source.
struct SourceRelease {
  void operator()(burn::burn_source* source) const;
};
using SourceReference = std::unique_ptr<burn::burn_source, SourceRelease>;

/// A source of libburn that takes its data from `producer`, `size` bytes in all, and then ends. It
/// owns the producer, prepares it now, and cleans it up with the last reference to the source.
/// (libburn.h, struct burn_source)
SourceReference makeImageSource(std::unique_ptr<DRTrackProducer> producer, int64_t size);

}  // namespace kelvane::recorder
