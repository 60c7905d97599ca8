// SPDX-License-Identifier: Apache-2.0
// What the library makes of a kernel file, on PoCL: by the entry points, which read `cl.bin` in the
// working folder, and by a session, which is given a path. Whatever the file, there is a start with
// OpenCL, an error that says so, or a run on the host, whose results are those of every other; and
// a next start finds the device as it was.
//
// Kernels may do anything to memory, so that this can be said of files only whose kernels are
// harmless or never run:
// - any text, and the library's file cut off or altered anywhere: built, kernels and buffers made,
//   stopped. No frame is given to it. Texts that include other files are left out.
// - kernels of the right names that do nothing, some of them with parameters that are missing,
//   superfluous or of another type, work-groups of another size, or not there: frames are given to
//   it.
// - the library's file with kernels that nobody can launch in place of some: likewise.
#include <CL/cl.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "framequilt/framequilt.h"
#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointState.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/target.h"
#include "tests/support/digest.h"
#include "tests/support/scene.h"
#include "tests/support/scoped_folder.h"

namespace {

namespace fs = std::filesystem;
using framequilt::Backend;
using framequilt::Error;
using framequilt::ErrorCode;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::fuzz::InputBytes;

constexpr int kRows = 200;
constexpr int kCols = 240;
/// Of a descriptor. Most of the time goes into matching; frames join with a quarter of it, too.
constexpr int kElements = 48;

/// PoCL's device with a context and a queue, which the library's globals are lent for each start.
class Lent {
 public:
  static Lent& device() {
    static Lent only;
    return only;
  }

  void lend() const {
    clRetainContext(context_);
    clRetainCommandQueue(queue_);
    ::device = device_;
    ::context = context_;
    commandQueue = queue_;
    program = nullptr;
  }

  /// A start that failed may leave what it was lent where it was; a run that was stopped releases
  /// it.
  void takeBack() const {
    FRAMEQUILT_HOLDS(program == nullptr);
    FRAMEQUILT_HOLDS(::context == nullptr || ::context == context_);
    FRAMEQUILT_HOLDS(commandQueue == nullptr || commandQueue == queue_);
    if (::context != nullptr) clReleaseContext(context_);
    if (commandQueue != nullptr) clReleaseCommandQueue(queue_);
    ::context = nullptr;
    commandQueue = nullptr;
  }

 private:
  Lent() {
    cl_platform_id platform = nullptr;
    FRAMEQUILT_HOLDS(clGetPlatformIDs(1, &platform, nullptr) == CL_SUCCESS);
    FRAMEQUILT_HOLDS(clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 1, &device_, nullptr) ==
                     CL_SUCCESS);
    context_ = clCreateContext(nullptr, 1, &device_, nullptr, nullptr, nullptr);
    queue_ = clCreateCommandQueue(context_, device_, 0, nullptr);
    FRAMEQUILT_HOLDS(context_ != nullptr && queue_ != nullptr);
  }

  cl_device_id device_ = nullptr;
  cl_context context_ = nullptr;
  cl_command_queue queue_ = nullptr;
};

std::string readFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

const std::string& libraryFile() {
  static const std::string text = readFile(FRAMEQUILT_KERNELS);
  return text;
}

/// A kernel of the library's file.
struct Declaration {
  std::size_t begin, bodyEnd;  ///< From "__kernel" to behind the body.
  std::string name;
  std::vector<std::string> parameters;
};

std::vector<std::string> parametersIn(const std::string& list) {
  std::vector<std::string> parameters;
  std::size_t begin = 0;
  while (begin < list.size()) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    parameters.push_back(list.substr(begin, end - begin));
    begin = end + 1;
  }
  return parameters;
}

std::vector<Declaration> declarationsIn(const std::string& file) {
  const std::string marker = "__kernel void ";
  std::vector<Declaration> found;
  for (std::size_t at = file.find(marker); at != std::string::npos;
       at = file.find(marker, at + 1)) {
    const std::size_t name = at + marker.size();
    const std::size_t open = file.find('(', name);
    const std::size_t close = file.find(')', open);
    // Bodies end with the first brace at the beginning of a line.
    found.push_back({at, file.find("\n}", close) + 2, file.substr(name, open - name),
                     parametersIn(file.substr(open + 1, close - open - 1))});
  }
  FRAMEQUILT_HOLDS(found.size() == 36);
  return found;
}

const std::vector<Declaration>& declarations() {
  static const std::vector<Declaration> all = declarationsIn(libraryFile());
  return all;
}

/// A kernel of that name which does nothing. What it wants may differ from what the library gives.
std::string idleKernel(InputBytes& in, const Declaration& kernel, unsigned char how) {
  static constexpr std::array<const char*, 8> kTypes = {
      "ulong other",        "float other",   "uchar other",      "__global double* other",
      "__local int* other", "float16 other", "struct Odd other", "__constant int* other"};
  std::vector<std::string> parameters = kernel.parameters;
  std::string attribute;
  std::string name = kernel.name;
  switch (how % 8) {
    case 1:
      parameters.pop_back();
      break;
    case 2:
      parameters.emplace_back(in.oneOf(kTypes));
      break;
    case 3:
      parameters[in.byte() % parameters.size()] = in.oneOf(kTypes);
      break;
    case 4:
      attribute = "__attribute__((reqd_work_group_size(" + std::to_string(in.between(1, 64)) +
                  ", " + std::to_string(in.between(1, 64)) + ", 1))) ";
      break;
    case 5:
      name += "Lost";
      break;
    case 6:
      parameters.clear();
      break;
    default:
      break;
  }
  std::string list;
  for (const std::string& parameter : parameters) list += (list.empty() ? "" : ", ") + parameter;
  return "__kernel " + attribute + "void " + name + "(" + list + ") {}\n";
}

/// Not one that a launch of the library's can reach: an argument is always missing, or of a size of
/// its own.
std::string barredKernel(InputBytes& in, const Declaration& kernel) {
  std::string list = "struct Odd first";
  if (in.flag()) list = "";
  for (const std::string& parameter : kernel.parameters) {
    list += (list.empty() ? "" : ", ") + parameter;
  }
  return "__kernel void " + kernel.name + "(" + list + (in.flag() ? ", int last" : "") +
         ", struct Odd behind) {}\n";
}

const char* const kOdd = "struct Odd { int a[9]; };\n";

struct Content {
  std::string text;
  bool runs;  ///< Frames may be given to it.
};

Content idleFile(InputBytes& in) {
  const bool runs = in.byte() >= 250;
  std::string text = kOdd;
  for (const Declaration& kernel : declarations()) text += idleKernel(in, kernel, in.byte());
  return {text, runs};
}

Content barredFile(InputBytes& in) {
  std::string text = kOdd + libraryFile();
  const std::vector<Declaration> all = declarationsIn(text);
  const Declaration& kernel = all[in.byte() % all.size()];
  text.replace(kernel.begin, kernel.bodyEnd - kernel.begin, barredKernel(in, kernel));
  return {text, true};
}

Content alteredFile(InputBytes& in) {
  std::string text = libraryFile();
  const std::size_t at = in.word() % text.size();
  const std::size_t length = in.byte();
  if (in.flag()) {
    text.resize(at);
  } else {
    text.replace(at, length, in.text(64));
  }
  return {text, false};
}

/// Those that are given frames take seconds, so that they are few.
Content takeContent(InputBytes& in) {
  const unsigned char kind = in.byte();
  if (kind < 80) return {in.text(8192), false};
  if (kind < 170) return alteredFile(in);
  return kind < 254 ? idleFile(in) : barredFile(in);
}

const Scene& scene() {
  static const Scene only(560, 700, 1, 11);
  return only;
}

/// Two frames through the entry points, on whatever backend is open.
std::uint64_t digestOfPair() {
  Frame reference = scene().cut(200, 150, kRows, kCols);
  Frame frame = scene().cut(270, 150, kRows, kCols);
  SPoint topLeft = {};
  SPoint bottomRight = {};
  cv::Mat mosaic;
  stitchflags record = {};
  const int result = stichingImagedJoint(reference.bytes.data(), frame.bytes.data(), 0, 1, 0, 0,
                                         false, topLeft, bottomRight, mosaic, record);
  FRAMEQUILT_HOLDS(result >= -1 && result <= 1);
  Digest digest;
  for (const int number : {result, topLeft.x, topLeft.y, bottomRight.x, bottomRight.y,
                           record.position.x, record.position.y, record.matchNum}) {
    digest.add(number);
  }
  for (int r = topLeft.y; r < bottomRight.y; ++r) {
    digest.addBytes(mosaic.ptr(r, topLeft.x), static_cast<std::size_t>(bottomRight.x - topLeft.x));
  }
  return digest.value();
}

bool start() { return initJoint(kRows, kCols, 1, 1, 20000, 20000, 1, 0); }

/// Without a device in the globals the library finds none that it takes: PoCL's name is another.
std::uint64_t digestOnHost() {
  FRAMEQUILT_HOLDS(start() && !openclDeviceFlag);
  const std::uint64_t digest = digestOfPair();
  uinitJoint();
  return digest;
}

void throughEntryPoints(const Content& content, std::uint64_t onHost) {
  FRAMEQUILT_HOLDS(start());
  if (!openclDeviceFlag) FRAMEQUILT_HOLDS(digestOfPair() == onHost);
  if (openclDeviceFlag && content.runs) digestOfPair();
  FRAMEQUILT_HOLDS(uinitJoint() && !openclDeviceFlag);
}

void throughSession(const Content& content, Backend backend) {
  SessionOptions options;
  options.rows = kRows;
  options.cols = kCols;
  options.channels = 1;
  options.cornerBudget = 1;
  options.backend = backend;
  options.kernelFile = "cl.bin";
  try {
    Session session(options);
    const bool onHost = session.backend() == "host";
    FRAMEQUILT_HOLDS(!onHost || backend == Backend::kAuto);
    if (!onHost && !content.runs) return;
    for (const int x : {200, 270}) {
      const Frame frame = scene().cut(x, 150, kRows, kCols);
      const framequilt::FrameResult result = session.add(framequilt::FrameView{
          frame.bytes.data(), kRows, kCols, 0, framequilt::PixelOrder::kGray});
      FRAMEQUILT_HOLDS(!onHost || x == 200 || result.verdict == framequilt::Verdict::kJoined);
    }
  } catch (const Error& error) {
    FRAMEQUILT_HOLDS(backend == Backend::kOpencl && error.code() == ErrorCode::kNoOpencl);
    FRAMEQUILT_HOLDS(std::string(error.what()).find("cl.bin") != std::string::npos);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  static const ScopedFolder folder;
  demesion = demesionCL = kElements;
  static const std::uint64_t onHost = digestOnHost();
  InputBytes in(data, size);
  const unsigned char way = in.byte();
  const Content content = takeContent(in);
  if (content.text.find("include") != std::string::npos) return 0;
  std::ofstream("cl.bin", std::ios::binary) << content.text;

  Lent::device().lend();
  switch (way % 3) {
    case 0:
      throughEntryPoints(content, onHost);
      break;
    case 1:
      throughSession(content, Backend::kOpencl);
      break;
    default:
      throughSession(content, Backend::kAuto);
  }
  FRAMEQUILT_HOLDS(uinitJoint());
  Lent::device().takeBack();
  return 0;
}
