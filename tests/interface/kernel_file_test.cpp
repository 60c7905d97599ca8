// SPDX-License-Identifier: Apache-2.0
// Where the kernel file of a library is looked for.
#include "interface/kernel_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

using framequilt::kernelFileFor;
using framequilt::wantedKernelFile;

namespace {

namespace fs = std::filesystem;

/// A library's folder, two levels below one of its own, as in an installation.
class KernelFile : public testing::Test {
 protected:
  KernelFile() {
    std::string name = (fs::temp_directory_path() / "framequilt-XXXXXX").string();
    root_ = fs::canonical(::mkdtemp(name.data()));
    fs::create_directories(library_ = root_ / "a" / "b" / "lib");
  }
  ~KernelFile() override { fs::remove_all(root_); }

  static std::string made(const fs::path& file) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "kernels";
    return fs::canonical(file).string();
  }
  fs::path installed() const { return library_ / FRAMEQUILT_KERNEL_FILE_FROM_LIBRARY; }
  fs::path built() const { return library_ / "share/framequilt/cl.bin"; }

  fs::path root_, library_;
};

}  // namespace

TEST_F(KernelFile, IsTheInstalledOneBeforeThatOfABuildTree) {
  EXPECT_EQ(kernelFileFor(library_), "");
  const std::string inBuild = made(built());
  EXPECT_EQ(kernelFileFor(library_), inBuild);
  const std::string inPlace = made(installed());
  EXPECT_EQ(kernelFileFor(library_), inPlace);
}

TEST_F(KernelFile, IsFoundAsAnAbsolutePath) {
  const std::string found = made(installed());
  EXPECT_EQ(kernelFileFor(fs::relative(library_)), found);
  EXPECT_EQ(wantedKernelFile(fs::relative(found).string()), found);
}

TEST_F(KernelFile, OfAnUnknownLibraryIsNowhere) { EXPECT_EQ(kernelFileFor({}), ""); }

TEST_F(KernelFile, IsAFile) {
  fs::create_directories(installed());
  EXPECT_EQ(kernelFileFor(library_), "");
  const fs::path pipe = root_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(wantedKernelFile(pipe.string()), "");
  EXPECT_EQ(wantedKernelFile((root_ / "nothing").string()), "");
}

TEST_F(KernelFile, IsNotLookedForInTheCurrentFolder) {
  const fs::path former = fs::current_path();
  made(root_ / "cl.bin");
  fs::current_path(root_);
  EXPECT_NE(wantedKernelFile(""), (root_ / "cl.bin").string());
  EXPECT_EQ(kernelFileFor(library_), "");
  fs::current_path(former);
}
