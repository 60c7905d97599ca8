// SPDX-License-Identifier: Apache-2.0
#include "interface/png_file.h"

#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>

#include "interface/c_failure.h"

namespace framequilt {
namespace {

namespace fs = std::filesystem;

/// More gains a tenth of the size at most, and takes twice as long and longer.
constexpr int kCompressionLevel = 1;

/// What libpng writes to, and why it could not.
struct Output {
  std::FILE* file;
  int error;          // An errno; 0: the disk is fine.
  char message[128];  // Of libpng.
};

void writeBytes(png_structp png, png_bytep bytes, std::size_t count) {
  auto& output = *static_cast<Output*>(png_get_io_ptr(png));
  if (std::fwrite(bytes, 1, count, output.file) == count) return;
  output.error = errno;
  png_error(png, "the disk refused");
}

void flushNothing(png_structp /*png*/) {}

[[noreturn]] void leave(png_structp png, png_const_charp message) {
  auto& output = *static_cast<Output*>(png_get_error_ptr(png));
  std::snprintf(output.message, sizeof output.message, "%s", message);
  png_longjmp(png, 1);
}

void warnNobody(png_structp /*png*/, png_const_charp /*message*/) {}

void writeRows(png_structp png, png_infop info, const cv::Mat& picture) {
  png_set_write_fn(png, png_get_error_ptr(png), writeBytes, flushNothing);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_compression_level(png, kCompressionLevel);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
  const bool gray = picture.channels() == 1;
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.cols),
               static_cast<png_uint_32>(picture.rows), 8,
               gray ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  if (!gray) png_set_bgr(png);
  for (int r = 0; r < picture.rows; ++r) png_write_row(png, picture.ptr(r));
  png_write_end(png, info);
}

/// False where libpng gave up. It leaves by a jump: nothing with a destructor lives in here.
bool encode(png_structp png, png_infop info, const cv::Mat& picture) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT: libpng's way to fail.
  writeRows(png, info, picture);
  return true;
}

struct Encoder {
  explicit Encoder(Output& output)
      : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, &output, leave, warnNobody)),
        info(png != nullptr ? png_create_info_struct(png) : nullptr) {
    if (info == nullptr) {
      png_destroy_write_struct(&png, nullptr);
      throw std::bad_alloc();
    }
  }
  ~Encoder() { png_destroy_write_struct(&png, &info); }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  png_structp png;
  png_infop info;
};

[[noreturn]] void fail(const fs::path& path, const std::string& what) {
  throw CallFailure(FRAMEQUILT_E_FILE, "'" + path.string() + "' " + what);
}

[[noreturn]] void failUnwritten(const fs::path& path, const std::string& why) {
  fail(path,
       "could not be written (" + why + "): choose a folder that you may write to, with room");
}

void requirePng(const fs::path& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension != ".png") fail(path, "names no PNG file: end it with .png");
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) fail(path, "is a folder: name a file in it");
}

/// A file in the folder of `target` that becomes it in the end, or goes.
class Temporary {
 public:
  explicit Temporary(const fs::path& target)
      : target_(target),
        path_(target.parent_path() /
              ("." + target.filename().string() + "." + std::to_string(::getpid()) + ".part")) {
    ::unlink(path_.c_str());  // Left by a process of the same number that was killed.
    file_ = std::fopen(path_.c_str(), "wbxe");
    if (file_ == nullptr) failUnwritten(target_, std::strerror(errno));
  }
  ~Temporary() {
    if (file_ != nullptr) std::fclose(file_);
    if (!published_) ::unlink(path_.c_str());
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  std::FILE* file() const { return file_; }

  void publish() {
    // A file system that cannot sync says EINVAL; that is no loss of data.
    const bool flushed =
        std::fflush(file_) == 0 && (::fsync(::fileno(file_)) == 0 || errno == EINVAL);
    if (!flushed) failUnwritten(target_, std::strerror(errno));
    if (std::rename(path_.c_str(), target_.c_str()) != 0) {
      failUnwritten(target_, std::strerror(errno));
    }
    published_ = true;
  }

 private:
  fs::path target_;
  fs::path path_;
  std::FILE* file_ = nullptr;
  bool published_ = false;
};

}  // namespace

void writePng(const cv::Mat& picture, const std::string& path) {
  requirePng(path);
  Temporary temporary(path);
  Output output{temporary.file(), 0, ""};
  const Encoder encoder(output);
  if (!encode(encoder.png, encoder.info, picture)) {
    failUnwritten(path, output.error != 0 ? std::strerror(output.error) : output.message);
  }
  temporary.publish();
}

}  // namespace framequilt
