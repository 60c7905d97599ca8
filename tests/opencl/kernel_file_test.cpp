// SPDX-License-Identifier: Apache-2.0
// The kernel file, the program built from it, and the queue.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "opencl/OpenclJoint.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"
#include "tests/opencl/source_line.h"
#include "tests/support/captured_output.h"

namespace layer = framequilt::opencl_layer;

namespace {

struct Free {
  void operator()(char* block) const { std::free(block); }
};
using Block = std::unique_ptr<char, Free>;

constexpr std::size_t kUntouched = 4711;

Block readFile(const std::string& path) {
  std::size_t size = kUntouched;
  Block block(ReadKernelSourceFileBin(path.c_str(), &size));
  EXPECT_EQ(size, kUntouched);
  return block;
}

const char kNoSource[] = "Failed to create CL program for source";

class KernelFile : public DeviceFixture {
 protected:
  Journal journal_;
};

TEST_F(KernelFile, ContentComesBackByteForByte) {
  std::string content = "kernel\r\n\tvoid\n";
  for (int byte = 0; byte < 256; ++byte) content += static_cast<char>(byte);
  writeText("some.bin", content);
  const Block block = readFile("some.bin");
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::string(block.get(), content.size()), content);
  EXPECT_EQ(journal_.take(), Entries{});
}

TEST_F(KernelFile, SizeMayBeNull) {
  writeText("some.bin", "x");
  const Block block(ReadKernelSourceFileBin("some.bin", nullptr));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(*block, 'x');
}

TEST_F(KernelFile, MissingFile) {
  EXPECT_EQ(readFile("folder/no file.bin"), nullptr);
  const Entries messages = journal_.take();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(withoutLineNumber(messages[0]),
            "opencl/OpenclJoint.cpp at  LINE :Can't open folder/no file.bin");
}

TEST_F(KernelFile, FilesWithNothingToRead) {
  writeText("empty.bin", "");
  std::filesystem::create_directory("folder.bin");
  for (const std::string name : {"empty", "folder"}) {
    EXPECT_EQ(readFile(name + ".bin"), nullptr);
    const Entries messages = journal_.take();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(withoutLineNumber(messages[0]),
              "opencl/OpenclJoint.cpp at LINE:can't read source " + name + ".bin");
  }
}

class KernelProgram : public DeviceFixture {
 protected:
  KernelProgram() {
    const Journal ignored;
    context_ = CreateContext(&device_);
  }
  ~KernelProgram() override {
    if (program_ != nullptr) clReleaseProgram(program_);
    clReleaseContext(context_);
    EXPECT_EQ(layer::live().count(), 0);
  }

  void SetUp() override { ASSERT_NE(context_, nullptr); }

  void build(const char* path) { program_ = CreateProgram(context_, device_, path); }
  std::string outputOfBuild(const char* path) {
    return standardOutputOf([this, path] { build(path); });
  }
  static int programs() { return layer::live().count(layer::ObjectKind::kProgram); }

  cl_device_id device_ = nullptr;
  cl_context context_ = nullptr;
  cl_program program_ = nullptr;
};

TEST_F(KernelProgram, MissingFile) {
  const std::string output = outputOfBuild("nowhere.bin");
  EXPECT_EQ(program_, nullptr);
  EXPECT_EQ(withoutLineNumber(output),
            std::string("opencl/OpenclJoint.cpp at  LINE :Can't open nowhere.bin\n") + kNoSource);
  EXPECT_EQ(programs(), 0);
}

TEST_F(KernelProgram, EmptyFile) {
  writeText("empty.bin", "");
  const std::string output = outputOfBuild("empty.bin");
  EXPECT_EQ(program_, nullptr);
  EXPECT_EQ(
      withoutLineNumber(output),
      std::string("opencl/OpenclJoint.cpp at LINE:can't read source empty.bin\n") + kNoSource);
}

TEST_F(KernelProgram, RuntimeRefusesTheText) {
  layer::failCall("clCreateProgramWithSource", 1, CL_OUT_OF_HOST_MEMORY);
  EXPECT_EQ(outputOfBuild("cl.bin"), kNoSource);
  EXPECT_EQ(program_, nullptr);
  EXPECT_EQ(layer::callCount("clBuildProgram"), 0);
}

TEST_F(KernelProgram, CompilerGetsExactlyTheFile) {
  // No zero and no line end behind it.
  const std::string text = "kernel void fill(global uchar* out) { out[0] = 1; } // \xE4 end";
  writeText("some.bin", text);
  EXPECT_EQ(outputOfBuild("some.bin"), "");
  ASSERT_NE(program_, nullptr);
  std::array<char, 1000> source{};
  std::size_t size = 0;
  ASSERT_EQ(clGetProgramInfo(program_, CL_PROGRAM_SOURCE, source.size(), source.data(), &size),
            CL_SUCCESS);
  EXPECT_EQ(std::string(source.data(), size - 1), text);
}

TEST_F(KernelProgram, ProgramIsBuiltWithoutOptions) {
  writeText("some.bin", "kernel void fill(global uchar* out) { out[0] = 1; }");
  build("some.bin");
  ASSERT_NE(program_, nullptr);
  cl_build_status status = CL_BUILD_NONE;
  clGetProgramBuildInfo(program_, device_, CL_PROGRAM_BUILD_STATUS, sizeof(status), &status,
                        nullptr);
  EXPECT_EQ(status, CL_BUILD_SUCCESS);
  std::array<char, 100> options{'x'};
  clGetProgramBuildInfo(program_, device_, CL_PROGRAM_BUILD_OPTIONS, options.size(), options.data(),
                        nullptr);
  EXPECT_STREQ(options.data(), "");
}

TEST_F(KernelProgram, TextThatDoesNotCompile) {
  writeText("wrong.bin", "kernel void fill(global uchar* out) { out[0] = unknown_name; }");
  const std::string output = outputOfBuild("wrong.bin");
  EXPECT_EQ(program_, nullptr);
  const std::string start = "Error in kernel:";
  EXPECT_EQ(output.substr(0, start.size()), start);
  EXPECT_NE(output.find("unknown_name"), std::string::npos) << output;
  EXPECT_EQ(programs(), 0);
}

TEST_F(KernelProgram, BuildWithoutALog) {
  layer::failCall("clBuildProgram", 1, CL_OUT_OF_RESOURCES);
  layer::failCall("clGetProgramBuildInfo", 1, CL_OUT_OF_HOST_MEMORY);
  EXPECT_EQ(outputOfBuild("cl.bin"), "Error in kernel:") << "no line end";
  EXPECT_EQ(program_, nullptr);
  EXPECT_EQ(programs(), 0);
}

TEST_F(KernelProgram, QueueIsInOrder) {
  const std::string output = standardOutputOf([this] {
    const cl_command_queue queue = CreateCommandQueue(context_, device_);
    ASSERT_NE(queue, nullptr);
    cl_command_queue_properties properties = ~cl_command_queue_properties{0};
    clGetCommandQueueInfo(queue, CL_QUEUE_PROPERTIES, sizeof(properties), &properties, nullptr);
    EXPECT_EQ(properties, 0U);
    cl_device_id inside = nullptr;
    clGetCommandQueueInfo(queue, CL_QUEUE_DEVICE, sizeof(void*), static_cast<void*>(&inside),
                          nullptr);
    EXPECT_EQ(inside, device_);
    clReleaseCommandQueue(queue);
  });
  EXPECT_EQ(output, "");
}

TEST_F(KernelProgram, QueueThatCannotBeCreated) {
  layer::failCall("clCreateCommandQueue", 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(standardOutputOf([this] { EXPECT_EQ(CreateCommandQueue(context_, device_), nullptr); }),
            "Failed to create commandQueue for device 0");
}

}  // namespace
