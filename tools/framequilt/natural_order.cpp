// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/natural_order.h"

#include <algorithm>
#include <cstddef>

namespace framequilt::tool {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Removes the run of digits at the start of `text`; returns it without leading zeros.
std::string_view takeNumber(std::string_view& text) {
  const std::size_t length =
      static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
  std::string_view number = text.substr(0, length);
  text.remove_prefix(length);
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

/// Below, equal to or above 0 as `a` counts less than, as much as or more than `b`. The numbers
/// may have any number of digits.
int compareNumbers(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

}  // namespace

bool naturalLess(std::string_view a, std::string_view b) {
  std::string_view restA = a;
  std::string_view restB = b;
  while (!restA.empty() && !restB.empty()) {
    if (isDigit(restA.front()) && isDigit(restB.front())) {
      const int order = compareNumbers(takeNumber(restA), takeNumber(restB));
      if (order != 0) return order < 0;
      continue;
    }
    if (restA.front() != restB.front()) {
      return static_cast<unsigned char>(restA.front()) < static_cast<unsigned char>(restB.front());
    }
    restA.remove_prefix(1);
    restB.remove_prefix(1);
  }
  if (restA.empty() != restB.empty()) return restA.empty();
  return a < b;
}

}  // namespace framequilt::tool
