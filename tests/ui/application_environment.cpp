// SPDX-License-Identifier: GPL-2.0-or-later
// Every window test runs in an application on the offscreen platform, with the English texts.
#include <gtest/gtest.h>

#include <QApplication>
#include <memory>

#include "platform/foundation/strings_table.h"

namespace {

class ApplicationEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    // With a screen of its own where a test has started this program with one.
    if (!qgetenv("QT_QPA_PLATFORM").startsWith("offscreen")) {
      qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    for (const char* bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"}) {
      qputenv(bus, "disabled:");
    }
    application_ = std::make_unique<QApplication>(argc_, argv_);
    QApplication::setApplicationName(QStringLiteral("KelvaneFS"));
    kelvane::loadStringsTable("en");
  }
  void TearDown() override { application_.reset(); }

 private:
  int argc_ = 1;
  char name_[16] = "ui_test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

}  // namespace
