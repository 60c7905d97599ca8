// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/device_fixture.h"

#include <filesystem>

#include "opencl/OpenclJointState.h"

namespace layer = framequilt::opencl_layer;

namespace {

constexpr const char* kKernelFile = "cl.bin";

}  // namespace

DeviceFixture::DeviceFixture(Memory memory) {
  // The first corner thread and the motion measure take turns.
  layer::allowSharedKernel("rgb2GaryKernel");
  layer::discreteMemory(memory == Memory::kDiscrete);
  layer::resetRecords();
  withCard();
}

DeviceFixture::~DeviceFixture() {
  layer::clearFaults();
  for (const std::string& violation : layer::violations()) ADD_FAILURE() << violation;
}

void DeviceFixture::withCard() {
  layer::presentDefault();
  std::filesystem::copy_file(FRAMEQUILT_KERNELS, kKernelFile,
                             std::filesystem::copy_options::skip_existing);
}

void DeviceFixture::withoutCard() {
  layer::present({});
  // A real card does not go away, but it is of no use without kernels.
  if (!layer::loaded()) std::filesystem::remove(kKernelFile);
}

void expectOnlyKeptBuffer() {
  using layer::ObjectKind;
  const layer::Ledger ledger = layer::live();
  EXPECT_EQ(ledger.mappings(), 0);
  const int kept = grad_bound_tempOneCl != nullptr ? 1 : 0;
  EXPECT_EQ(ledger.count(ObjectKind::kBuffer), kept);
  EXPECT_LE(ledger.count(ObjectKind::kContext), kept);
  EXPECT_EQ(ledger.count(), kept + ledger.count(ObjectKind::kContext));
}

void releaseKeptBuffer() {
  if (grad_bound_tempOneCl != nullptr) clReleaseMemObject(grad_bound_tempOneCl);
  grad_bound_tempOneCl = nullptr;
}
