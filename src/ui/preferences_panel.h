// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

class QCheckBox;
class QLabel;
class QLayout;

namespace kelvane {

/// Whether this build ever looks for newer versions.
enum class UpdateChecks { Made, NotMade };

/// The preferences panel: the user defaults that are the user's to set, and what this copy of the
/// application is. It is no sheet: the window can be used beside it. Each change is stored at once,
/// in the defaults that everybody else reads. Main thread only.
class PreferencesPanel : public QDialog {
  Q_OBJECT

 public:
  explicit PreferencesPanel(QWidget* parent);

  /// Where none are made, the setting that turns them off is shown for what it is.
  void setUpdateChecks(UpdateChecks checks);
  /// Called when the user wants to read the licence agreement.
  void setLicenseHandler(std::function<void()> wanted) { licenseWanted_ = std::move(wanted); }

  /// Shows the panel with the defaults as they are now, and gives it the keyboard.
  void present();

 private:
  /// What being checked means for the default.
  enum class Checked { IsYes, IsNo };
  struct Setting {
    std::string key;
    Checked meaning;
    QCheckBox* box;
    QLabel* explanation;
  };

  QLayout* addSetting(const char* key, const char* textKey, Checked meaning);
  QLayout* makeFoot();
  void read();
  void store(const Setting& setting, bool checked);

  std::function<void()> licenseWanted_;
  std::vector<Setting> settings_;  // Their widgets are children of this dialog, as is the next.
  QLabel* notStored_;
};

}  // namespace kelvane
