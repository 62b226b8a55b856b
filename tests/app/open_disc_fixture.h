// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QProcess>
#include <filesystem>
#include <fstream>
#include <optional>

#include "app/application_core.h"
#include "app/controller_services.h"
#include "app/kv_controller.h"
#include "app/windowless_outlets.h"
#include "foundation/application_fixture.h"
#include "foundation/turn_until.h"
#include "platform/foundation/paths.h"
#include "platform/recording/dr_device.h"
#include "platform/userfs/gm_user_file_system.h"
#include "ui/erase_follower.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::test {

namespace fs = std::filesystem;

/// A window that notes what matters here, and erases for real.
class ErasingWindow : public WindowlessOutlets {
 public:
  DREraseProgressPanel& eraseProgressPanel() override { return panel_; }
  void beginBurnConfirmationSheet() override { asksToBurn = hasAsked = true; }
  void setHidden(HideableView view, bool isHidden) override {
    if (!isHidden) shown.push_back(view);
  }
  void setSizeInformationField(const std::string& text) override { sizes.push_back(text); }
  void selectFile(const std::string& path, const std::string& root) override {
    if (onReveal) onReveal();
    asked.push_back("reveal " + path + " below " + root);
  }
  void hideApplication() override { asked.emplace_back("hide"); }
  void beginAlertSheet(const Alert& alert, std::function<void(int)>) override {
    alerts.push_back(alert.messageKey);
    details.push_back(alert.detail);
  }

  void replyToApplicationShouldTerminate(bool shouldTerminate) override {
    replies.push_back(shouldTerminate);
  }

  void endBurnConfirmationSheet() override { asksToBurn = false; }

  bool asksToBurn = false;
  bool hasAsked = false;
  std::vector<HideableView> shown;
  std::vector<std::string> sizes;
  std::vector<std::string> asked;  ///< Of the desktop, in this order.
  std::function<void()> onReveal;  ///< To look at what stands then.
  std::vector<bool> replies;
  bool isErasing() const { return panel_.isErasing(); }
  std::vector<std::string> alerts;
  std::vector<std::string> details;  ///< Of the alerts.
  std::vector<std::string> outcomes;

 private:
  class Panel : public EraseFollower {
   public:
    explicit Panel(ErasingWindow& window) : window_(window) {}

   private:
    void showBeginning(const std::string&) override {}
    void showFraction(std::optional<double>) override {}
    void showEnd(const std::string& error) override { window_.outcomes.push_back(error); }

    ErasingWindow& window_;
  };

  Panel panel_{*this};
};

/// The application as it runs: a disc in an emulated drive, its volume mounted for real; and a
/// window of the kind given.
template <typename Window>
class OpenDiscTestOf : public ApplicationFixture {
 protected:
  void SetUp() override {
    disc_ = prefix_.path() + "/disc.kvdisc";
    makeDisc();
    std::string error;
    core_ = ApplicationCore::create({disc_}, DriveRegistry::RealDrives::Excluded, &error);
    ASSERT_NE(core_, nullptr) << error;
    services_ = systemControllerServices(core_->visibleMounts());
    controller_.emplace(window_, services_);
    controller_->awakeFromNib();
    controller_->initialiseController();
    ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
    for (const std::string& name : contents()) ASSERT_TRUE(fs::exists(volume_ + "/" + name));
    device_ = controller_->currentDevice();
  }

  /// The names of the disc's files; a disc without any is blank.
  virtual std::vector<std::string> contents() const { return {"a.txt"}; }

  /// What kelvanedisc is told of the disc that it makes.
  virtual QStringList discOptions() const { return {"--media", "cd-rw"}; }

  void makeDisc() {
    QStringList arguments{"create", QString::fromStdString(disc_)};
    arguments << discOptions();
    const std::string source = prefix_.path() + "/source";
    fs::create_directory(source);
    for (const std::string& name : contents()) std::ofstream(source + "/" + name) << "content";
    if (!contents().empty()) {
      arguments << "--from" << QString::fromStdString(source) << "--label"
                << "SAMPLE";
    }
    ASSERT_EQ(QProcess::execute(QStringLiteral(KELVANE_BIN_DIR "/kelvanedisc"), arguments), 0);
  }

  void TearDown() override {
    controller_.reset();
    core_.reset();
    DriveRegistry::shared().reset();
  }

  bool waitFor(const std::function<bool()>& condition) { return turnUntil(condition); }

  void close() {
    controller_->closeVolume();
    EXPECT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  }

  /// Another controller with these services, and the disc is inserted once more. It has been closed
  /// before.
  void openAnew(const ControllerServices& services) {
    controller_.emplace(window_, services);
    controller_->awakeFromNib();
    controller_->initialiseController();
    device_->loadMedia();
  }

  TemporaryPrefix prefix_;
  Window window_;
  std::string disc_;
  std::string volume_ = paths::overlayMountPoint();
  std::unique_ptr<ApplicationCore> core_;
  ControllerServices services_;
  std::optional<KVController> controller_;
  DRDevice* device_ = nullptr;
};

using OpenDiscTest = OpenDiscTestOf<ErasingWindow>;

}  // namespace kelvane::test
