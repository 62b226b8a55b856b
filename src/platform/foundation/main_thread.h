// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>

namespace kelvane {

/// Queues `work` on the main thread, the thread of the application object's event loop, and returns
/// without waiting, from whatever thread (also the main one: the work then runs after the current
/// event). Works queued by one thread run in the order in which they were queued. What is queued
/// when no application object exists, or never reaches its event loop, is dropped.
void performOnMainThread(std::function<void()> work);

/// Runs `work` on the main thread once `delay` has passed. Called on the main thread.
void performAfterDelay(std::chrono::milliseconds delay, std::function<void()> work);

/// Whether this is the thread of the application object.
bool isMainThread();

}  // namespace kelvane
