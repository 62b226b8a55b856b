// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "app/windowless_outlets.h"
#include "platform/foundation/placeholders.h"
#include "platform/recording/dr_device.h"

namespace kelvane::test {

/// A window that notes, in order and as text, all that the controller does to it. Others may note
/// in the same list, so that the order between window and drive can be seen.
class RecordingOutlets : public WindowlessOutlets {
 public:
  void note(const std::string& call) {
    calls.push_back(call);
    if (onCall) onCall(call);
  }

  void centerWindows() override { note("centerWindows"); }
  void makeKeyAndOrderFront() override { note("makeKeyAndOrderFront"); }
  void setHidden(HideableView view, bool hidden) override {
    static const char* const names[] = {"openButton", "diskTable", "diskScroll", "message"};
    note(format("%@ %@", hidden ? "hide" : "show", names[static_cast<int>(view)]));
  }
  void setFrame(ContentView view, Rect frame, Movement movement) override {
    static const char* const names[] = {"message", "diskScroll", "mountedItem", "burn"};
    const char* place = frame.x < 0 ? "left" : frame.x > 0 ? "right" : "in";
    note(format("%@ to %@%@", names[static_cast<int>(view)], place,
                movement == Movement::Direct ? " direct" : ""));
  }
  void setAnimationDuration(double seconds) override {
    note(format("duration %i ms", static_cast<int>(seconds * 1000)));
  }
  void setHeaderLine(const std::string& text) override { note("header " + text); }
  void setOpenButtonCaption(const std::string& text) override { note("caption " + text); }
  void setMessage(const std::string& text) override { note("text " + text); }
  void setVolumeNameField(const std::string& text) override { note("volume " + text); }
  void setDeviceNameField(const std::string& text) override { note("device " + text); }
  void setSizeInformationField(const std::string& text) override { note("size " + text); }
  bool showsSizeInformation() const override { return sizeIsShown; }
  void setBurnMessage(const std::string& text) override { note("burnMessage " + text); }
  void setBurnConfirmationDiskTitle(const std::string& name) override {
    note("title " + name);
    WindowlessOutlets::setBurnConfirmationDiskTitle(name);
  }
  void beginBurnConfirmationSheet() override { note("beginSheet"); }
  void endBurnConfirmationSheet() override { note("endSheet"); }
  void orderOutBurnConfirmationPanel() override { note("orderOutPanel"); }
  void beginAlertSheet(const Alert& alert, std::function<void(int)> didEnd) override {
    note(format("alert %@ %@", alert.messageKey, alert.informativeKey));
    alerts.push_back(alert);
    answerAlert = std::move(didEnd);
  }
  int runAlertModal(const Alert& alert) override {
    note(format("modal alert %@ %@", alert.messageKey, alert.informativeKey));
    alerts.push_back(alert);
    return modalAlertAnswer;
  }
  DREraseProgressPanel& eraseProgressPanel() override { return erasePanel_; }
  void burnDidEnd(BurnEnd end) override { burnEnds.push_back(end); }
  void discHasGone() override { note("disc has gone"); }
  void beep() override { note("beep"); }
  void selectFile(const std::string& path, const std::string& root) override {
    note(format("select %@ below %@", path, root));
  }
  void openFile(const std::string& path) override { note("open " + path); }
  void openURL(const std::string& url) override { note("browse " + url); }
  void hideApplication() override { note("hideApplication"); }
  void terminate() override { note("terminate"); }
  void replyToApplicationShouldTerminate(bool shouldTerminate) override {
    note(shouldTerminate ? "reply yes" : "reply no");
  }

  int32_t burnSpeedTag() override { return speedTag; }

  bool has(const std::string& call) const {
    return std::find(calls.begin(), calls.end(), call) != calls.end();
  }

  std::vector<std::string> calls;
  std::function<void(const std::string& call)> onCall;  ///< To look at what stands meanwhile.
  std::vector<Alert> alerts;
  std::function<void(int returnCode)> answerAlert;
  int modalAlertAnswer = kAlertFirstButtonReturn + 1;
  int32_t speedTag = 0;
  bool sizeIsShown = true;
  std::vector<BurnEnd> burnEnds;

 protected:
  void setIndeterminate(bool indeterminate) override {
    note(indeterminate ? "bar indeterminate" : "bar determinate");
  }
  void setDoubleValue(double value) override {
    note(format("bar at %i/100", static_cast<int>(value * 100)));
  }
  void startAnimation() override { note("bar animates"); }
  void stopAnimation() override { note("bar stops"); }

 private:
  // Takes the erases it is given and starts none.
  class ErasePanel : public DREraseProgressPanel {
   public:
    explicit ErasePanel(RecordingOutlets& window) : window_(window) {}
    void setDescription(const std::string& description) override {
      window_.note("erase description " + description);
    }
    void beginProgressSheetForErase(std::unique_ptr<DRErase> erase) override {
      window_.note("erase sheet for " + erase->device()->bsdName());
    }

   private:
    RecordingOutlets& window_;
  };

  ErasePanel erasePanel_{*this};
};

}  // namespace kelvane::test
