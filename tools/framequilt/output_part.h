// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

namespace framequilt::tool {

/// Outputs are written beside their target, as ".NAME.PID.part", until they are complete. Whoever
/// writes one holds a lock on it, which ends with the process, also with one of another machine or
/// container that shares the folder.

/// Where this process writes `target`.
std::filesystem::path partOf(const std::filesystem::path& target);

/// Where this process would keep an older folder that `target` replaces.
std::filesystem::path olderOf(const std::filesystem::path& target);

/// Creates the part as a file, or as a folder. One that a killed process of the same number left is
/// removed first.
/// \returns its descriptor, which holds the lock; -1, and errno: EEXIST when another process of the
///          same number (in another container, say) writes it now.
int createPartFile(const std::filesystem::path& part);
int createPartFolder(const std::filesystem::path& part);

/// NAME, where `name` is that of a part of any process; empty for other names.
std::string targetNameOf(const std::string& name);

/// Removes what killed processes left beside `target`: parts whose process runs no more and whose
/// lock is free, as files or as folders. An older folder that was moved away for a new one that
/// never came is put back. What cannot be removed stays; nothing else is touched.
void removeLeftovers(const std::filesystem::path& target);

/// Removes this one file or folder, if it is a leftover. \returns whether it did.
bool removeLeftover(const std::filesystem::path& part);

}  // namespace framequilt::tool
