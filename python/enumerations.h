// SPDX-License-Identifier: Apache-2.0
/// \file
/// Enumerations of C++ as `enum.Enum` of Python. A member is named as in C++, `kMovedTooFar` as
/// MOVED_TOO_FAR, and its value is that name in small letters; where a member is wanted, its value
/// will do.
#pragma once

#include <pybind11/pybind11.h>

#include "framequilt/error.h"
#include "framequilt/refusal.h"
#include "framequilt/session.h"

namespace framequilt::python {

/// Makes all enumerations members of the module.
void bindEnumerations(pybind11::module_& module);

/// The member of Python for a value, and the other way round. For each enumeration that is bound.
/// \throws pybind11::type_error, value_error for what is neither a member nor the value of one.
template <class Enumeration>
pybind11::object memberFor(Enumeration value);
template <class Enumeration>
Enumeration valueOf(pybind11::handle member);

}  // namespace framequilt::python

namespace pybind11::detail {

template <class Enumeration>
struct FramequiltEnumerationCaster {
  bool load(handle source, bool /*convert*/) {
    value = framequilt::python::valueOf<Enumeration>(source);
    return true;
  }
  static handle cast(Enumeration source, return_value_policy /*policy*/, handle /*parent*/) {
    return framequilt::python::memberFor(source).release();
  }
  template <class>
  using cast_op_type = Enumeration;
  operator Enumeration() const { return value; }  // NOLINT(google-explicit-constructor)

  Enumeration value{};
};

#define FRAMEQUILT_ENUMERATION_CASTER(Name)                                              \
  template <>                                                                            \
  struct type_caster<framequilt::Name> : FramequiltEnumerationCaster<framequilt::Name> { \
    static constexpr auto name = const_name("framequilt." #Name);                        \
  }
FRAMEQUILT_ENUMERATION_CASTER(Backend);
FRAMEQUILT_ENUMERATION_CASTER(Criterion);
FRAMEQUILT_ENUMERATION_CASTER(ErrorCode);
FRAMEQUILT_ENUMERATION_CASTER(PixelOrder);
FRAMEQUILT_ENUMERATION_CASTER(Refusal);
FRAMEQUILT_ENUMERATION_CASTER(Stage);
FRAMEQUILT_ENUMERATION_CASTER(Verdict);
#undef FRAMEQUILT_ENUMERATION_CASTER

}  // namespace pybind11::detail
