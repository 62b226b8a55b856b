// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <stop_token>

namespace kelvane {

/// Queues `work` on the main thread, the thread of the application object's event loop, and returns
/// without waiting, from whatever thread (also the main one: the work then runs after the current
/// event). Works queued by one thread run in the order in which they were queued. What is queued
/// when no application object exists, or never reaches its event loop, is dropped.
void performOnMainThread(std::function<void()> work);

/// Runs `work` on the main thread, as `performOnMainThread` does, and returns when it has returned.
/// Called on any other thread, by whoever must not outlive `stop`: once that is requested, this
/// returns at once, and work that has not begun is never done. Requested on the main thread only.
void performOnMainThreadAndWait(std::function<void()> work, const std::stop_token& stop);

/// Runs `work` on the main thread once `delay` has passed. Called on the main thread.
void performAfterDelay(std::chrono::milliseconds delay, std::function<void()> work);

/// Whether this is the thread of the application object.
bool isMainThread();

}  // namespace kelvane
