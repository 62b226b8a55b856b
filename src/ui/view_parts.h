// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <string>

#include "ui/disc_picture.h"

class QLabel;
class QWidget;

namespace kelvane {

class RoomyButton;

/// The text of `key` for Qt.
QString localizedText(const std::string& key);

/// `text` for a widget that would take "&" for the mark of a mnemonic.
QString withoutMnemonic(QString text);

/// A text of the strings table's, in which "&" marks the mnemonic, as it is read and spoken.
QString withoutMnemonicMark(QString text);

/// A label for changing text, plain whatever it holds: names come from discs and drives. `name` is
/// its object name, `accessibleKey` the key of what it is for. The parent owns it.
QLabel* makeTextField(const char* name, const std::string& accessibleKey, QWidget* parent);

/// Shows `text` in a label whose accessible name so far is what it is for. A screen reader speaks
/// the text from now on, and describes it by what it is for.
void setFieldText(QLabel& field, const QString& text);

/// A button with the text of `key`, in which "&" marks the mnemonic. The parent owns it.
RoomyButton* makeButton(const char* name, const std::string& key, QWidget* parent);

/// The picture of a disc that stands at the left of a content view. The parent owns it.
QLabel* makeDiscPicture(Shade shade, QWidget* parent);

}  // namespace kelvane
