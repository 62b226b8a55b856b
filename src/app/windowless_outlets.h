// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "platform/recording/dr_erase.h"
#include "ui/dr_erase_progress_panel.h"
#include "ui/media_controller.h"
#include "ui/window_outlets.h"

namespace kelvane {

/// Outlets of a window that is not there: what would be shown is dropped, what would be asked for
/// later is kept. Whoever works without a window overrides what matters to it.
class WindowlessOutlets : public WindowOutlets, private ProgressIndicator {
 public:
  void centerWindows() override {}
  void makeKeyAndOrderFront() override {}
  void setHidden(HideableView, bool) override {}
  void setFrame(ContentView, Rect, Movement) override {}
  void setAnimationDuration(double) override {}
  void setHeaderLine(const std::string&) override {}
  void setOpenButtonCaption(const std::string&) override {}
  void setMessage(const std::string&) override {}
  void setVolumeNameField(const std::string&) override {}
  void setDeviceNameField(const std::string&) override {}
  void setSizeInformationField(const std::string&) override {}
  void setBurnMessage(const std::string&) override {}
  ProgressIndicator& burnProgressIndicator() override { return *this; }
  int32_t burnSpeedTag() override { return 0; }
  MediaController& mediaController() override { return mediaController_; }
  void setBurnConfirmationDiskTitle(const std::string& volumeName) override { title_ = volumeName; }
  std::string burnConfirmationDiskTitle() override { return title_; }
  void beginBurnConfirmationSheet() override {}
  void endBurnConfirmationSheet() override {}
  void orderOutBurnConfirmationPanel() override {}
  void beginAlertSheet(const Alert&, std::function<void(int)>) override {}
  int runAlertModal(const Alert& alert) override {
    const int buttons = static_cast<int>(alert.buttonKeys.size());
    return buttons == 0 ? kAlertFirstButtonReturn : kAlertFirstButtonReturn + buttons - 1;
  }
  DREraseProgressPanel& eraseProgressPanel() override { return eraseProgressPanel_; }
  void burnDidEnd(BurnEnd) override {}
  void beep() override {}
  void selectFile(const std::string&, const std::string&) override {}
  void openFile(const std::string&) override {}
  void openURL(const std::string&) override {}
  void hideApplication() override {}
  void terminate() override {}
  void replyToApplicationShouldTerminate(bool) override {}

 protected:
  // The burn progress bar.
  void setIndeterminate(bool) override {}
  void setDoubleValue(double) override {}
  void startAnimation() override {}
  void stopAnimation() override {}

 private:
  // Erases nothing.
  class NoErase : public DREraseProgressPanel {
    void setDescription(const std::string&) override {}
    void beginProgressSheetForErase(std::unique_ptr<DRErase>) override {}
  };

  MediaController mediaController_;
  std::string title_;
  NoErase eraseProgressPanel_;
};

}  // namespace kelvane
