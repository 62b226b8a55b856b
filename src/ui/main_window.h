// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/desktop/notifications.h"
#include "ui/media_controller.h"
#include "ui/window_outlets.h"
#include "ui/window_status.h"

class QAction;
class QDialog;

namespace kelvane {

namespace desktop {
class MotionSetting;
}

class ConfirmationSheet;
class CopySheet;
class DiscListView;
class DiscListModel;
class EraseProgressSheet;
class EraseQuestion;
class HeaderView;
class InsertDiscButton;
class KVBurnView;
class LicenseReader;
class MessageView;
class MountedItemView;
class PreferencesPanel;
class RoomyButton;
class SlidingArea;
class WindowMenu;
enum class Choice;
enum class UpdateChecks;

/// The main window: a header line, below it the content area in which four views take turns, at the
/// bottom a bar of buttons. Main thread only. One source file for its parts, one for what the user
/// does in it, one for what the controller shows by it.
class MainWindow : public QWidget, public WindowOutlets {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);
  ~MainWindow() override;

  /// Who hears what the user asks for; borrowed, null for nobody.
  void setActions(WindowActions* actions) { actions_ = actions; }

  /// Called when the user wants to quit, by `terminate`, by closing the window or by its shortcut.
  /// The window stays until `allowClosing`.
  void setQuitHandler(std::function<void()> quitRequested);
  /// Called for each `replyToApplicationShouldTerminate`, also where no quit is pending.
  void setTerminateReplyHandler(std::function<void(bool shouldTerminate)> replied);
  /// From now on the window closes when it is told to, without asking.
  void allowClosing() { closingAllowed_ = true; }
  /// It asks again: the application has not quit after all.
  void askBeforeClosing() { closingAllowed_ = false; }

  /// Called whenever an erase has ended. An alert that tells why it failed is begun right behind.
  void setEraseEndHandler(std::function<void()> eraseEnded);

  /// Calls `next` once no alert stands over the window: at once where there is none.
  void afterAlerts(std::function<void()> next);

  /// Offers to insert these discs into their emulated drives; hidden where there are none. `insert`
  /// is called with the index of the chosen one.
  void setInsertableDiscs(const std::vector<std::string>& names,
                          std::function<void(size_t index)> insert);

  /// Whether this build looks for newer versions, which the preferences tell.
  void setUpdateChecks(UpdateChecks checks);
  /// Gives the licence agreement as HTML whenever the user wants to read it.
  void setLicenseSource(std::function<std::string()> licenseText) {
    licenseSource_ = std::move(licenseText);
  }

  const SlidingArea& contentArea() const { return *contentArea_; }

  void centerWindows() override;
  void makeKeyAndOrderFront() override;
  void setHidden(HideableView view, bool hidden) override;
  void setFrame(ContentView view, Rect frame, Movement movement) override;
  void setAnimationDuration(double seconds) override;
  void setHeaderLine(const std::string& text) override;
  void setOpenButtonCaption(const std::string& text) override;
  void setMessage(const std::string& text) override;
  void setVolumeNameField(const std::string& text) override;
  void setDeviceNameField(const std::string& text) override;
  void setSizeInformationField(const std::string& text) override;
  void setBurnMessage(const std::string& text) override;
  ProgressIndicator& burnProgressIndicator() override;
  int32_t burnSpeedTag() override;
  MediaController& mediaController() override { return mediaController_; }
  void setBurnConfirmationDiskTitle(const std::string& volumeName) override;
  std::string burnConfirmationDiskTitle() override;
  void beginBurnConfirmationSheet() override;
  void endBurnConfirmationSheet() override;
  void orderOutBurnConfirmationPanel() override;
  bool showsBurnSummary() const override { return true; }
  void setBurnSummary(const BurnSummary& summary) override;
  void beginCopySheet(const CopyRequest& request) override;
  bool isCopying() const override;
  void endCopySheet() override;
  void beginAlertSheet(const Alert& alert, std::function<void(int returnCode)> didEnd) override;
  int runAlertModal(const Alert& alert) override;
  DREraseProgressPanel& eraseProgressPanel() override;
  bool isErasing() const override;
  void burnDidEnd(BurnEnd end) override;
  void beep() override;
  void selectFile(const std::string& path, const std::string& root) override;
  void openFile(const std::string& path) override;
  void openURL(const std::string& url) override;
  void hideApplication() override;
  void terminate() override;
  void replyToApplicationShouldTerminate(bool shouldTerminate) override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  QWidget* makeHeader();
  QWidget* makeDiskScrollView();
  QWidget* makeButtonBar();
  void addContentViews();
  void connectActions();
  void addMenuEntries();
  void addShortcuts();
  void addFiles(Choice choice);
  void showLicense();
  void applyScale();
  void adaptButtons();
  void adaptStatus();
  void showPercent(int percent);
  /// Tells the user by a notification; `key` is that of its summary.
  void notifyOfEnd(desktop::Notice::Kind kind, const std::string& key);
  void showMediaController();
  void selectInMediaController();
  void askToErase(size_t row);

  WindowActions* actions_ = nullptr;
  MediaController mediaController_;
  WindowStatus status_{*this};
  std::function<void()> quitRequested_;
  std::function<void(bool)> terminateReplied_;
  std::function<void()> eraseEnded_;
  std::function<std::string()> licenseSource_;
  bool closingAllowed_ = false;
  std::unique_ptr<desktop::MotionSetting> motionSetting_;

  // All are children of this window.
  QWidget* header_ = nullptr;
  HeaderView* headerBackground_ = nullptr;
  WindowMenu* windowMenu_ = nullptr;
  QAction* addFilesEntry_ = nullptr;
  QAction* addFolderEntry_ = nullptr;
  QWidget* buttonBar_ = nullptr;
  SlidingArea* contentArea_ = nullptr;
  MessageView* messageView_ = nullptr;
  QWidget* diskScrollView_ = nullptr;
  DiscListView* diskTable_ = nullptr;
  DiscListModel* discList_ = nullptr;
  MountedItemView* mountedItemView_ = nullptr;
  KVBurnView* burnView_ = nullptr;
  InsertDiscButton* insertDiscButton_ = nullptr;
  RoomyButton* showDiskButton_ = nullptr;
  RoomyButton* eraseButton_ = nullptr;
  RoomyButton* openButton_ = nullptr;
  ConfirmationSheet* burnConfirmationPanel_ = nullptr;
  CopySheet* copyPanel_ = nullptr;
  EraseProgressSheet* eraseProgressPanel_ = nullptr;
  EraseQuestion* eraseQuestion_ = nullptr;
  QPointer<QDialog> newestAlert_;
  PreferencesPanel* prefsPanel_ = nullptr;
  LicenseReader* licenseReader_ = nullptr;
  desktop::Notifications* notifications_ = nullptr;
};

}  // namespace kelvane
