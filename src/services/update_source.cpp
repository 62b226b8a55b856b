// SPDX-License-Identifier: GPL-2.0-or-later
#include "services/update_source.h"

namespace kelvane {

UpdateSource UpdateSource::ofThisBuild() {
  return {.versionEndpoint = KELVANE_UPDATE_ENDPOINT, .productPage = KELVANE_PRODUCT_PAGE};
}

}  // namespace kelvane
