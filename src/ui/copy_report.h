// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "ui/copy_job.h"

class QWidget;

namespace kelvane {

/// Tells, by an alert sheet over `parent`, what of a copy did not come about, item by item with the
/// reason. Says nothing where all did, and where the user has cancelled it.
void reportCopy(QWidget* parent, const CopyOutcome& outcome);

}  // namespace kelvane
