// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "tests/tools/temporary_folder.h"

/// An empty folder that is the working directory while this lives.
class ScopedFolder {
 public:
  ScopedFolder() : former_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder_.path());
  }
  ~ScopedFolder() { std::filesystem::current_path(former_); }
  ScopedFolder(const ScopedFolder&) = delete;
  ScopedFolder& operator=(const ScopedFolder&) = delete;

  std::string file(const std::string& name) const { return folder_.file(name); }

 private:
  std::filesystem::path former_;
  TemporaryFolder folder_;
};
