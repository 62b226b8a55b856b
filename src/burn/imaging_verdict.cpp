// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/imaging_verdict.h"

#include <algorithm>

namespace kelvane {

ImagingVerdict judgeImaging(std::string_view standardError) {
  constexpr std::string_view kContinuesDisc = "Rock Ridge signatures found\n";
  const bool successful = standardError.empty() || standardError.ends_with(kContinuesDisc);
  return successful ? ImagingVerdict::Successful : ImagingVerdict::Failed;
}

std::string asciiText(std::string_view bytes) {
  std::string text(bytes);
  std::replace_if(
      text.begin(), text.end(),
      [](char character) { return static_cast<unsigned char>(character) >= 0x80; }, '?');
  return text;
}

}  // namespace kelvane
