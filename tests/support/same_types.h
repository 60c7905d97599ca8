// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

/// Whether all of the others are T.
template <class T, class... Others>
constexpr bool kAreAll = (std::is_same_v<T, Others> && ...);
