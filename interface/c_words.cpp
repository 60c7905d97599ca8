// SPDX-License-Identifier: Apache-2.0
// Names, versions and words of framequilt_c.h.
#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "framequilt/framequilt_c.h"
#include "interface/c_failure.h"
#include "interface/c_records.h"
#include "interface/c_structs.h"

using framequilt::codeOf;

namespace {

/// In the order of the enumeration.
constexpr std::array<const char*, 14> kCodeNames = {
    "FRAMEQUILT_OK",          "FRAMEQUILT_E_ARGUMENT",     "FRAMEQUILT_E_SIZE",
    "FRAMEQUILT_E_OPTION",    "FRAMEQUILT_E_SESSION_OPEN", "FRAMEQUILT_E_START",
    "FRAMEQUILT_E_NO_OPENCL", "FRAMEQUILT_E_FRAME",        "FRAMEQUILT_E_STOPPED",
    "FRAMEQUILT_E_BUSY",      "FRAMEQUILT_E_EMPTY",        "FRAMEQUILT_E_FILE",
    "FRAMEQUILT_E_MEMORY",    "FRAMEQUILT_E_ENGINE",
};
static_assert(kCodeNames.size() == FRAMEQUILT_E_ENGINE + 1);

/// The words are literals, so that a zero follows each; those of no refusal are null.
const char* terminated(std::string_view word) { return word.empty() ? "" : word.data(); }

}  // namespace

const char* framequilt_code_name(int32_t code) {
  const auto index = static_cast<std::size_t>(code);
  return code >= 0 && index < kCodeNames.size() ? kCodeNames[index] : "unknown code";
}

const char* framequilt_version_text(void) { return FRAMEQUILT_VERSION; }

int32_t framequilt_version_number(void) { return FRAMEQUILT_VERSION_NUMBER; }

framequilt_code framequilt_reason_words(int32_t reason, framequilt_words* words) {
  return codeOf([&] {
    framequilt::requireStruct(words, "words");
    const framequilt::RefusalWords& found = framequilt::wordsFor(framequilt::refusalOf(reason));
    framequilt_words record{};
    record.reason = terminated(found.reason);
    record.quantity = terminated(found.quantity);
    record.unit = terminated(found.unit);
    record.relation = terminated(found.relation);
    record.advice = terminated(found.advice);
    framequilt::give(record, words);
  });
}

framequilt_code framequilt_explain(const framequilt_result* result, char* text, size_t text_bytes) {
  return codeOf([&] {
    framequilt::requireStruct(result, "result");
    framequilt::requireGiven(text, "text");
    if (text_bytes == 0) {
      throw framequilt::CallFailure(FRAMEQUILT_E_ARGUMENT,
                                    "text has no room: give FRAMEQUILT_EXPLANATION_BYTES bytes");
    }
    const std::string line =
        framequilt::explain(framequilt::refusalOf(result->reason), {result->judged, result->limit});
    const std::size_t length = std::min(line.size(), text_bytes - 1);
    std::copy_n(line.data(), length, text);
    text[length] = '\0';
  });
}
