// SPDX-License-Identifier: Apache-2.0
/// \file
/// Both backends' offset estimation in the programs that link scripted_offsets.cpp: it gives what
/// `scriptOffset` says.
#pragma once

#include <functional>

#include "tests/run/scripted_offset.h"

/// Called in place of every estimation from now on, with what it was given.
void whileEstimating(std::function<void(unsigned char* reference, unsigned char* frame)> happens);
