// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QColor>
#include <QPalette>

namespace kelvane {

/// The colours of the content area. It is a dark display on light and dark desktops alike, since
/// the names of the discs are always drawn in white.
namespace display_colors {

inline const QColor kTop{0x3a, 0x41, 0x4c};
inline const QColor kBottom{0x26, 0x2b, 0x33};
inline const QColor kEdge{0x17, 0x1a, 0x1f};
inline const QColor kText{Qt::white};
inline const QColor kSecondaryText{0xb4, 0xba, 0xc4};
inline const QColor kSelection{0x2f, 0x6f, 0xb5};

}  // namespace display_colors

/// `base` with the display's colours, for the widgets in the content area.
QPalette displayPalette(QPalette base);

}  // namespace kelvane
