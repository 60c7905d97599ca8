// SPDX-License-Identifier: Apache-2.0
/// \file
/// Every call of an action that can fail does so once, one after the other.
#pragma once

#include <functional>
#include <new>
#include <opencv2/core.hpp>
#include <string>

#include "framequilt/error.h"
#include "tests/support/fault_points.h"

/// What became of an action with a fault in it.
struct FaultyCall {
  PassedPoints passed;
  std::string outcome;  ///< Of the action's own words, or what it threw.
};

/// Runs `action`, which returns words for its result, while the `failing`th point fails.
template <class Action>
FaultyCall callWithFault(long failing, Action action) {
  FaultyCall call;
  armFaults(failing);
  try {
    const auto result = action();
    call.passed = disarmFaults();
    call.outcome = result;
  } catch (const framequilt::Error& error) {
    call.passed = disarmFaults();
    call.outcome = "Error " + std::to_string(static_cast<int>(error.code())) + ": " + error.what();
  } catch (const std::bad_alloc&) {
    call.passed = disarmFaults();
    call.outcome = "std::bad_alloc";
  } catch (const cv::Exception& failure) {
    call.passed = disarmFaults();
    call.outcome = failure.code == cv::Error::StsNoMem ? "cv::Exception" : failure.what();
  } catch (const std::exception& other) {
    call.passed = disarmFaults();
    call.outcome = other.what();
  }
  return call;
}

/// Who else makes objects while an action is tried: those of an OpenCL driver come and go as it
/// likes.
enum class Beside { kNobody, kDriver };

/// Calls `trial` with 0, which only counts the points of the action, then once for each of them, or
/// for every FRAMEQUILT_FAULT_STRIDEth where there are many (17 where that is not set; another
/// first one for each action). Nothing may be left behind by a trial, threads or, with nobody
/// beside it, objects. Prints a line of figures.
void sweepFaults(const std::string& action, const std::function<FaultyCall(long failing)>& trial,
                 Beside beside = Beside::kNobody);
