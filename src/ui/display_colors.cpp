// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/display_colors.h"

namespace kelvane {

QPalette displayPalette(QPalette base) {
  using namespace display_colors;
  base.setColor(QPalette::Window, kBottom);
  base.setColor(QPalette::WindowText, kText);
  base.setColor(QPalette::Base, kEdge);
  base.setColor(QPalette::Text, kText);
  base.setColor(QPalette::Button, QColor(0x4a, 0x53, 0x60));
  base.setColor(QPalette::ButtonText, kText);
  base.setColor(QPalette::Light, QColor(0x60, 0x6a, 0x78));
  base.setColor(QPalette::Dark, kEdge);
  base.setColor(QPalette::Highlight, kSelection);
  base.setColor(QPalette::HighlightedText, kText);
  return base;
}

}  // namespace kelvane
