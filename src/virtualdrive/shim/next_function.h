// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <dlfcn.h>

namespace kelvane::virtualdrive::shim {

/// The function of this name that the program would have reached without this library; null where
/// there is none.
template <typename Function>
Function* nextFunction(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace kelvane::virtualdrive::shim

/// Marks what the library offers to the loader in the place of the C library's function.
#define KELVANE_STANDS_IN extern "C" __attribute__((visibility("default")))
