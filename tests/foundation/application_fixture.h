// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>

namespace kelvane {

/// A test with an application object, whose event loop the test may run.
class ApplicationFixture : public testing::Test {
 private:
  int argc_ = 1;
  char name_[5] = "test";
  char* argv_[2] = {name_, nullptr};
  QCoreApplication application_{argc_, argv_};
};

}  // namespace kelvane
