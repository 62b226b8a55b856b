// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <optional>

#include "ui/copy_job.h"

class QDialog;
class QWidget;

namespace kelvane {

/// What an answer counts for: this name alone, or all that are met from now on.
enum class CopyQuestionScope { This, All };

/// Asks, by a sheet over `parent`, what to do about a name that is taken. `answered` is called
/// once; without an answer where the copy is to be cancelled, which is what Escape does. Gives the
/// sheet, which deletes itself when it is closed.
QDialog* openCopyQuestion(
    QWidget* parent, const CopyConflict& conflict,
    std::function<void(std::optional<ConflictAnswer> answer, CopyQuestionScope scope)> answered);

}  // namespace kelvane
