// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/erase_method.h"

#include "platform/recording/dr_media_types.h"
#include "platform/recording/mmc/disc_information.h"

namespace kelvane::recorder {
namespace {

std::string kindOf(mmc::Profile profile) {
  const auto type = mediaTypeOf(profile);
  return type ? type->substr(kMediaTypePrefixLength) : "of a kind that is not known";
}

}  // namespace

EraseMethod eraseMethodFor(mmc::Transport& transport, std::string& refusal) {
  const MediaState state = readMediaState(transport);
  if (!state.present) {
    refusal = "There is no disc in the drive.";
    return EraseMethod::None;
  }
  switch (state.profile) {
    case mmc::Profile::CdRw:
    case mmc::Profile::DvdRwSequential:
    case mmc::Profile::DvdRwRestrictedOverwrite: {
      const auto disc = mmc::readDiscInformation(transport);
      // A first session that was begun and never finished leaves a disc that is not as good as new.
      const bool asNew = state.blank && state.appendable;
      if (disc && disc->erasable) return asNew ? EraseMethod::None : EraseMethod::Blank;
      refusal = "The drive says that this disc cannot be erased.";
      return EraseMethod::None;
    }
    case mmc::Profile::DvdPlusRw:
      return state.blank ? EraseMethod::None : EraseMethod::OverwriteBeginning;
    default:
      refusal = "The disc (" + kindOf(state.profile) + ") is not rewritable and cannot be erased.";
      return EraseMethod::None;
  }
}

}  // namespace kelvane::recorder
