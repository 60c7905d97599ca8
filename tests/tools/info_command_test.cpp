// SPDX-License-Identifier: Apache-2.0
// What is told of the backends, on machines with devices and without.
#include "tools/framequilt/info_command.h"

#include <framequilt/opencl_devices.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/opencl_layer.h"

namespace layer = framequilt::opencl_layer;
using framequilt::tool::infoText;

namespace {

/// The lines from the OpenCL backend's on.
std::string openclText() {
  const std::string text = infoText();
  const std::size_t begin = text.find("  opencl: ");
  return begin == std::string::npos ? text : text.substr(begin);
}

std::string kernelLine() { return "    kernels: " + framequilt::openclKernelFile() + "\n"; }

class InfoText : public testing::Test {
 protected:
  ~InfoText() override { layer::presentDefault(); }
};

}  // namespace

TEST_F(InfoText, WithoutAPlatformSaysWhatToInstall) {
  layer::present({});
  EXPECT_EQ(openclText(),
            "  opencl: not used (no OpenCL platform is installed: install the driver of an AMD or "
            "NVIDIA GPU, or choose the host backend)\n" +
                kernelLine());
}

TEST_F(InfoText, NamesEveryDevice) {
  layer::FakePlatform other;
  other.name = "Other";
  layer::FakePlatform empty;
  empty.name = "Empty";
  empty.devices.clear();
  layer::present({other, layer::FakePlatform(), empty});
  EXPECT_EQ(
      openclText(),
      "  opencl: used\n"
      "    Other, Test GPU (GPU, 8192 MB, OpenCL 1.2 test): not used (its platform is neither "
      "AMD's nor NVIDIA's)\n"
      "    NVIDIA test platform, Test GPU (GPU, 8192 MB, OpenCL 1.2 test): used\n"
      "    Empty: not used (it has no devices)\n" +
          kernelLine());
}

TEST_F(InfoText, HostIsAlwaysThere) {
  for (const bool device : {false, true}) {
    if (!device) layer::present({});
    EXPECT_NE(infoText().find("\n  host: used ("), std::string::npos);
    layer::presentDefault();
  }
}
