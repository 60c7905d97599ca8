// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/journal_lines.h"

#include <array>
#include <cstdio>
#include <optional>

#include "tools/framequilt/content_hash.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

/// What takes the place of the object's closing brace.
std::string sealOf(std::uint64_t checksum) {
  std::array<char, 32> seal{};
  std::snprintf(seal.data(), seal.size(), ",\"sum\":\"%016llx\"}",
                static_cast<unsigned long long>(checksum));
  return seal.data();
}

/// The object of a line, and its checksum for the next; none for a line that is not as written.
std::optional<std::string> unsealed(std::string_view line, std::uint64_t& checksum) {
  const std::size_t sealSize = sealOf(0).size();
  if (line.size() <= sealSize) return std::nullopt;
  const std::string_view open = line.substr(0, line.size() - sealSize);
  const std::uint64_t own = checksumOf(open, checksum);
  if (line.substr(open.size()) != sealOf(own)) return std::nullopt;
  checksum = own;
  return std::string(open) + "}";
}

}  // namespace

std::string sealedLine(const std::string& object, std::uint64_t& checksum) {
  const std::string open = object.substr(0, object.size() - 1);
  checksum = checksumOf(open, checksum);
  return open + sealOf(checksum) + "\n";
}

JournalLines readJournalLines(std::string_view text, const std::string& name) {
  JournalLines lines;
  while (lines.goodBytes < text.size()) {
    const std::string_view rest = text.substr(lines.goodBytes);
    const std::size_t end = rest.find('\n');
    if (end == std::string_view::npos) break;
    std::optional<std::string> object = unsealed(rest.substr(0, end), lines.checksum);
    if (!object) {
      if (end + 1 == rest.size()) break;
      throw ToolError(name + " line " + std::to_string(lines.objects.size() + 1) +
                      " is damaged (its checksum does not fit): take a copy of the journal, or "
                      "stitch anew");
    }
    lines.objects.push_back(std::move(*object));
    lines.goodBytes += end + 1;
  }
  return lines;
}

}  // namespace framequilt::tool
