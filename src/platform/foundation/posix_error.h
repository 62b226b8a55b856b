// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

/// An error of the POSIX domain, handed out through an `error` argument.
///
/// A code of 0 means that no error has been set: an operation may fail without setting one, and may
/// set one although it reports success. Who calls decides what either means.
struct PosixError {
  int code = 0;  ///< An errno value, or 0.

  bool isSet() const { return code != 0; }
};

/// Stores `code` where the caller asked for the error; does nothing where it did not.
inline void setError(PosixError* error, int code) {
  if (error != nullptr) error->code = code;
}

}  // namespace kelvane
