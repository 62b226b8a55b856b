// SPDX-License-Identifier: GPL-2.0-or-later
// Stands in for the settings of the build.
#include <cstdlib>

#include "services/update_source.h"

namespace kelvane {

UpdateSource UpdateSource::ofThisBuild() {
  const char* endpoint = std::getenv("KELVANE_TEST_ENDPOINT");
  return {.versionEndpoint = endpoint == nullptr ? "" : endpoint,
          .productPage = "https://kelvanefs.example/download"};
}

}  // namespace kelvane
