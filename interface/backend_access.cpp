// SPDX-License-Identifier: Apache-2.0
#include "interface/backend_access.h"

#include "cpu/call_record.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointCallRecord.h"

namespace framequilt {
namespace {

Limits limitsOfHost() {
  return {ImageOverlap_minCpu, ImageOverlap_maxCpu, brightThCpu, defintThCpu, motionValueThCpu};
}

Limits limitsOfOpencl() {
  return {ImageOverlap_minCL, ImageOverlap_maxCL, brightThCL, defintThCL, motionValueThCL};
}

}  // namespace

const BackendAccess& hostAccess() {
  static constexpr BackendAccess access = {&forgetMeasures,     &restoreReference, &motionOfCall,
                                           &lackedMemoryInCall, &limitsOfHost,     true};
  return access;
}

const BackendAccess& openclAccess() {
  static constexpr BackendAccess access = {&forgetMeasuresCL, &restoreReferenceCL,
                                           &motionOfCallCL,   &lackedMemoryInCallCL,
                                           &limitsOfOpencl,   false};
  return access;
}

}  // namespace framequilt
