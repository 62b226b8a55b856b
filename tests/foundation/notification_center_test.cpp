// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/notification_center.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace kelvane {
namespace {

class NotificationCenterTest : public testing::Test {
 protected:
  NotificationCenter::Handler recorder(const std::string& who) {
    return [this, who](const Notification&) { heard_.push_back(who); };
  }

  NotificationCenter center_;
  int sender_ = 0;
  int otherSender_ = 0;
  int observer_ = 0;
  int otherObserver_ = 0;
  std::vector<std::string> heard_;
};

TEST_F(NotificationCenterTest, ObserversHearTheirNameOnlyInTheOrderOfTheirRegistration) {
  center_.addObserver(&observer_, "wanted", nullptr, recorder("first"));
  center_.addObserver(&otherObserver_, "wanted", nullptr, recorder("second"));
  center_.addObserver(&observer_, "other", nullptr, recorder("never"));
  center_.post("wanted", &sender_);
  EXPECT_EQ(heard_, (std::vector<std::string>{"first", "second"}));
}

TEST_F(NotificationCenterTest, AnObserverOfOneSenderHearsNoOther) {
  center_.addObserver(&observer_, "name", &sender_, recorder("one"));
  center_.post("name", &otherSender_);
  EXPECT_TRUE(heard_.empty());
  center_.post("name", &sender_);
  EXPECT_EQ(heard_.size(), 1u);
}

TEST_F(NotificationCenterTest, PostingCallsOnThePostingThreadAndReturnsAfterwards) {
  std::thread::id calledOn;
  center_.addObserver(&observer_, "name", nullptr,
                      [&](const Notification&) { calledOn = std::this_thread::get_id(); });
  std::thread poster([&] {
    center_.post("name", &sender_);
    EXPECT_EQ(calledOn, std::this_thread::get_id());
  });
  poster.join();
}

TEST_F(NotificationCenterTest, TheNotificationCarriesSenderAndUserInformation) {
  center_.addObserver(&observer_, "name", nullptr, [&](const Notification& notification) {
    EXPECT_EQ(notification.object, &sender_);
    EXPECT_EQ(std::any_cast<int>(notification.userInfo), 42);
    heard_.push_back(notification.name);
  });
  center_.post("name", &sender_, 42);
  EXPECT_EQ(heard_, std::vector<std::string>{"name"});
}

TEST_F(NotificationCenterTest, RemovingOneNameLeavesTheOthers) {
  center_.addObserver(&observer_, "gone", nullptr, recorder("gone"));
  center_.addObserver(&observer_, "kept", nullptr, recorder("kept"));
  center_.removeObserver(&observer_, "gone", nullptr);
  center_.post("gone", &sender_);
  center_.post("kept", &sender_);
  EXPECT_EQ(heard_, std::vector<std::string>{"kept"});
}

TEST_F(NotificationCenterTest, RemovingAnObserverEndsAllOfItsRegistrationsAndNoOther) {
  center_.addObserver(&observer_, "a", nullptr, recorder("mine"));
  center_.addObserver(&observer_, "b", nullptr, recorder("mine"));
  center_.addObserver(&otherObserver_, "a", nullptr, recorder("other"));
  center_.removeObserver(&observer_);
  center_.post("a", &sender_);
  center_.post("b", &sender_);
  EXPECT_EQ(heard_, std::vector<std::string>{"other"});
}

TEST_F(NotificationCenterTest, AnObserverMayRemoveItselfAndPostWhileItIsCalled) {
  center_.addObserver(&observer_, "first", nullptr, [&](const Notification&) {
    center_.removeObserver(&observer_);
    center_.post("second", &sender_);
  });
  center_.addObserver(&otherObserver_, "second", nullptr, recorder("second"));
  center_.post("first", &sender_);
  center_.post("first", &sender_);
  EXPECT_EQ(heard_, std::vector<std::string>{"second"});
}

}  // namespace
}  // namespace kelvane
