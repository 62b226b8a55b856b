// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/foundation/progress_indicator.h"

namespace kelvane {

class DREraseProgressPanel;
class MediaController;
struct BurnSummary;
struct CopyRequest;

/// A frame in window points: origin at the lower left of the content area, y upwards.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  friend bool operator==(const Rect&, const Rect&) = default;
};

/// The four views that take turns in the content area.
enum class ContentView { Message, DiskScroll, MountedItem, Burn };

/// What can be hidden. The disc table is hidden by itself or with the scroll view around it.
enum class HideableView { OpenButton, DiskTable, DiskScroll, Message };

enum class Movement { Direct, Animated };

/// How a burn ended.
enum class BurnEnd { Succeeded, Failed };

/// An alert in words of the strings table: each text is a key.
struct Alert {
  enum class Style { Warning, Informational, Critical };

  Style style = Style::Warning;
  std::vector<std::string> buttonKeys;
  std::string messageKey;
  std::string informativeKey;
  std::string detail;  ///< Not a key: what a drive or program said, for whoever wants to know; may
                       ///< be empty.
};

/// The number with which an alert's end handler hears of the first button; the second is one more,
/// and so on.
inline constexpr int kAlertFirstButtonReturn = 1000;

/// The controller's one way to the main window and to the application around it, in the vocabulary
/// of the window's outlets.
///
/// The Qt window implements it, batch mode does without widgets, and tests record it. Main thread
/// only. Sheets are opened and return at once; nothing but `runAlertModal` waits for the user.
class WindowOutlets {
 public:
  virtual ~WindowOutlets() = default;

  /// Centres the preferences panel and the main window.
  virtual void centerWindows() = 0;
  virtual void makeKeyAndOrderFront() = 0;

  virtual void setHidden(HideableView view, bool hidden) = 0;
  /// Moves a view to a frame: at once, or within the duration set last.
  virtual void setFrame(ContentView view, Rect frame, Movement movement) = 0;
  virtual void setAnimationDuration(double seconds) = 0;

  virtual void setHeaderLine(const std::string& text) = 0;
  virtual void setOpenButtonCaption(const std::string& text) = 0;
  virtual void setMessage(const std::string& text) = 0;

  virtual void setVolumeNameField(const std::string& text) = 0;
  virtual void setDeviceNameField(const std::string& text) = 0;
  virtual void setSizeInformationField(const std::string& text) = 0;
  /// Whether the field is seen. Where it is not, the volume is not asked, since whoever asks it
  /// keeps it from being unmounted meanwhile.
  virtual bool showsSizeInformation() const { return true; }

  virtual void setBurnMessage(const std::string& text) = 0;
  virtual ProgressIndicator& burnProgressIndicator() = 0;
  /// The tag of the selected item of the speed pop-up: 0 the drive's fastest, otherwise the
  /// multiple of 1x.
  virtual int32_t burnSpeedTag() = 0;

  /// The list that the disc table shows, with its selection.
  virtual MediaController& mediaController() = 0;

  virtual void setBurnConfirmationDiskTitle(const std::string& volumeName) = 0;
  virtual std::string burnConfirmationDiskTitle() = 0;
  /// Opens the burn confirmation panel as a sheet. Its buttons call `WindowActions`.
  virtual void beginBurnConfirmationSheet() = 0;
  virtual void endBurnConfirmationSheet() = 0;
  virtual void orderOutBurnConfirmationPanel() = 0;
  /// Whether the panel tells what will change. Where it does not, nobody finds that out.
  virtual bool showsBurnSummary() const { return false; }
  /// What is known now of the session in question; called while the panel is shown.
  virtual void setBurnSummary(const BurnSummary& summary) { static_cast<void>(summary); }

  /// Opens an alert as a sheet. `didEnd`, where given, hears which button ended it, after the alert
  /// has gone.
  virtual void beginAlertSheet(const Alert& alert, std::function<void(int returnCode)> didEnd) = 0;

  /// Shows an alert before all windows of the application, and gives the button that ended it, as
  /// the end handler of a sheet hears of it. Events are handled meanwhile.
  virtual int runAlertModal(const Alert& alert) = 0;

  /// The shared progress panel of erases.
  virtual DREraseProgressPanel& eraseProgressPanel() = 0;
  /// Whether it follows an erase, which nobody can stop.
  virtual bool isErasing() const { return false; }

  /// A burn is over. Where it failed, an alert has been begun that tells why.
  virtual void burnDidEnd(BurnEnd end) = 0;

  /// Copies files onto the volume, by a sheet that tells how far it is; what goes wrong is told by
  /// alerts. Returns at once. Not asked for while one is under way.
  virtual void beginCopySheet(const CopyRequest& request) { static_cast<void>(request); }
  virtual bool isCopying() const { return false; }
  /// Cancels a copy that is under way, and returns when nothing is read or written any more.
  virtual void endCopySheet() {}

  /// The disc that was open has left the drive; what was changed on its volume is lost.
  virtual void discHasGone() {}

  /// The system beep: an action has been refused.
  virtual void beep() = 0;
  /// Shows the item in the desktop's file manager, with `root` as the top of what it shows.
  virtual void selectFile(const std::string& path, const std::string& root) = 0;
  virtual void openFile(const std::string& path) = 0;
  /// Opens a web page in the user's browser.
  virtual void openURL(const std::string& url) = 0;
  virtual void hideApplication() = 0;

  /// Asks the application to quit, as the user would.
  virtual void terminate() = 0;
  /// Answers a quit that was deferred; without effect where none is pending.
  virtual void replyToApplicationShouldTerminate(bool shouldTerminate) = 0;
};

/// What the user can ask for in the window. The controller implements it. Main thread only.
class WindowActions {
 public:
  virtual ~WindowActions() = default;

  /// Opens the selected disc, or closes the open one.
  virtual void mountBurnFS() = 0;
  virtual void tableViewDoubleClicked() = 0;
  virtual bool tableViewShouldSelectRow(int32_t row) = 0;
  /// Whether a disc is being opened, is open or is being burned: it stays the selected one, and no
  /// other can be chosen beside it.
  virtual bool discIsTaken() const { return false; }
  /// Reveals the open volume in the file manager.
  virtual void showDisk() = 0;
  /// Whether files can be copied onto the open volume now.
  virtual bool volumeTakesFiles() const { return false; }
  /// Copies files and folders, by their absolute paths, onto the open volume.
  virtual void addFiles(const std::vector<std::string>& paths) { static_cast<void>(paths); }
  virtual void burnConfirmationDidConfirm() = 0;
  virtual void burnConfirmationDidCancel() = 0;
  /// Nothing is burned, and what was changed is kept where the user finds it.
  virtual void burnConfirmationDidKeep() {}
  /// Asks whether to erase the selected disc, and erases it then.
  virtual void attemptErase() = 0;
};

}  // namespace kelvane
