// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace framequilt::tool {

/// The lines of a journal: JSON objects, each with a checksum of itself and of all lines before it
/// as its last member, so that one that is cut off, changed, missing or in another place is known.
struct JournalLines {
  std::vector<std::string> objects;  ///< Without their checksums.
  std::size_t goodBytes = 0;         ///< Of the text: what these lines take up.
  std::uint64_t checksum = 0;        ///< Of the last of them; what the next one is sealed with.
};

/// The line that stands for `object`, a JSON object with one member or more in one line.
/// \param checksum  In: of the line before, 0 for the first; out: of this one.
std::string sealedLine(const std::string& object, std::uint64_t& checksum);

/// Reads a journal's text. A last line that is not complete, as a write that was cut off leaves it,
/// is dropped.
/// \param name  What messages call the file, in quotes.
/// \throws ToolError for a damaged line that is not the last one.
JournalLines readJournalLines(std::string_view text, const std::string& name);

}  // namespace framequilt::tool
