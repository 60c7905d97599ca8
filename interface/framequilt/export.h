// SPDX-License-Identifier: Apache-2.0
/// \file
/// How names are offered by the shared library.
#pragma once

/// Marks what the shared library offers; everything else is hidden.
///
/// The visibility is `default`, never `protected`: a host program that writes a tuning global
/// holds the only copy of it (a copy relocation), and the library has to read that copy.
#define FRAMEQUILT_EXPORT __attribute__((visibility("default")))
