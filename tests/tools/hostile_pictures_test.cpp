// SPDX-License-Identifier: Apache-2.0
// What becomes of a picture of an unusual kind between two ordinary ones: the table of
// docs/command-line.md, row by row.
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "picture_files.h"
#include "recorded_notes.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tools/framequilt/picture_source.h"

using framequilt::tool::GObjectPtr;
using framequilt::tool::openPictures;

namespace {

constexpr int kRows = 30;
constexpr int kCols = 40;

struct Row {
  const char* name;  ///< Of the picture's file.
  std::function<void(const std::string& file)> write;
  bool taken;
  std::string remark;  ///< Behind the file's name; empty: none.
  cv::Size size{kCols, kRows};
};

std::ostream& operator<<(std::ostream& stream, const Row& row) { return stream << row.name; }

std::string bigEndian(std::uint32_t number) {
  return {static_cast<char>(number >> 24U), static_cast<char>(number >> 16U),
          static_cast<char>(number >> 8U), static_cast<char>(number)};
}

std::string littleEndian(std::uint32_t number) {
  const std::string bytes = bigEndian(number);
  return {bytes.rbegin(), bytes.rend()};
}

/// A chunk of a PNG, with its checksum.
std::string chunk(const std::string& kind, const std::string& content) {
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const char byte : kind + content) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1U) ^ ((crc & 1U) != 0U ? 0xEDB88320U : 0U);
  }
  return bigEndian(static_cast<std::uint32_t>(content.size())) + kind + content + bigEndian(~crc);
}

/// A PNG that says that it has this size, with next to nothing in it.
std::string hollowPng(std::uint32_t cols, std::uint32_t rows) {
  return "\x89PNG\r\n\x1A\n" +
         chunk("IHDR", bigEndian(cols) + bigEndian(rows) + std::string("\x01\0\0\0\0", 5)) +
         chunk("IDAT", "\x78\x9C\x03") + chunk("IEND", "");
}

/// The same as a bitmap, with run lengths.
std::string hollowBitmap(std::uint32_t cols, std::uint32_t rows) {
  constexpr std::uint32_t kSize = 54 + 4 + 2;
  return "BM" + littleEndian(kSize) + littleEndian(0) + littleEndian(58) + littleEndian(40) +
         littleEndian(cols) + littleEndian(rows) + std::string("\x01\0\x08\0", 4) +
         littleEndian(1) + littleEndian(2) + littleEndian(0) + littleEndian(0) + littleEndian(1) +
         littleEndian(0) + std::string("\0\0\0\0\0\x01", 6);
}

/// A PNG of one picture that says it is animated.
std::string animatedPng(const cv::Mat& picture) {
  std::vector<unsigned char> png;
  cv::imencode(".png", picture, png);
  std::string bytes(png.begin(), png.end());
  constexpr std::size_t kAfterHeader = 8 + 25;
  return bytes.insert(kAfterHeader, chunk("acTL", bigEndian(2) + bigEndian(0)));
}

/// Two pictures, one above the other in `both`, as pages or as frames of an animation.
void saveTwo(const std::string& file, const cv::Mat& both) {
  framequilt::tool::startVips();
  const GObjectPtr<VipsImage> view(
      vips_image_new_from_memory_copy(both.data, both.total() * both.elemSize(), both.cols,
                                      both.rows, both.channels(), VIPS_FORMAT_UCHAR));
  vips_image_set_int(view.get(), VIPS_META_PAGE_HEIGHT, both.rows / 2);
  if (vips_image_write_to_file(view.get(), file.c_str(), nullptr) != 0) {
    throw std::runtime_error("cannot write " + file);
  }
}

void saveOneBitTiff(const std::string& file) {
  framequilt::tool::startVips();
  const cv::Mat picture = texture(kRows, kCols);
  const GObjectPtr<VipsImage> view(vips_image_new_from_memory_copy(
      picture.data, picture.total(), picture.cols, picture.rows, 1, VIPS_FORMAT_UCHAR));
  if (vips_tiffsave(view.get(), file.c_str(), "bitdepth", 1, nullptr) != 0) {
    throw std::runtime_error("cannot write " + file);
  }
}

void saveHalf(const std::string& file) {
  save(file, noise(kRows, kCols));
  cutInHalf(file);
}

std::function<void(const std::string&)> text(const std::string& bytes) {
  return [bytes](const std::string& file) { writeText(file, bytes); };
}
std::function<void(const std::string&)> picture(const cv::Mat& pixels) {
  return [pixels](const std::string& file) { save(file, pixels); };
}

constexpr const char* kNoPicture = " cannot be read as a picture: left out";
constexpr const char* kDamaged = " is damaged (its pixels end early or are wrong): left out";
constexpr const char* kDepth = " has neither 8 nor 16 bits per channel: left out";
constexpr const char* kSixteen = " has 16 bits per channel: converted to 8";
constexpr const char* kTransparency = " has a transparency channel: dropped";
constexpr const char* kSeveral = " holds several pictures: the first is taken";

/// Nothing is encoded here, since tests are listed outside the environment that they run in.
std::vector<Row> rows() {
  const float infinity = std::numeric_limits<float>::infinity();
  return {
      {"empty.png", text(""), false, kNoPicture},
      {"cut.jpg", saveHalf, false, kDamaged},
      {"cut.png", saveHalf, false, kDamaged},
      {"cut.bmp", saveHalf, false, kDamaged},
      {"cut.tif", saveHalf, false, kNoPicture},
      {"cut.webp", saveHalf, false, kNoPicture},
      {"nowide.pgm", text("P5 0 30 255\n"), false,
       " has 1 x 30 pixels, the capture has 40 x 30 pixels: left out"},
      {"nowide.png", text(hollowPng(0, kRows)), false, kNoPicture},
      {"nowide.bmp", text(hollowBitmap(0, kRows)), false, kDamaged},
      {"dot.png", picture(texture(1, 1)), false,
       " has 1 x 1 pixels, the capture has 40 x 30 pixels: left out"},
      {"wide.jpg", picture(texture(8, 65500)), false,
       " has 65500 x 8 pixels, more than 12000 a side: left out"},
      {"wide.png", text(hollowPng(12001, 8)), false,
       " has 12001 x 8 pixels, more than 12000 a side: left out"},
      {"bomb.png", text(hollowPng(50000, 60000)), false,
       " has 50000 x 60000 pixels, more than 12000 a side: left out"},
      {"bomb.bmp", text(hollowBitmap(30000, 30000)), false,
       " has 30000 x 30000 pixels, more than 12000 a side: left out"},
      {"deepbomb.bmp", text(hollowBitmap(0x80000000U, 0x80000000U)), false,
       " has 2147483648 x 2147483648 pixels, more than 12000 a side: left out"},
      {"bomb.pgm", text("P5 100000 100000 255\n"), false,
       " has 100000 x 100000 pixels, more than 12000 a side: left out"},
      {"hollow.png", text(hollowPng(kCols, kRows)), false, kDamaged},
      {"turned.jpg",
       [](const std::string& file) {
         writeText(file, jpegWithOrientation(texture(kCols, kRows), 6));
       },
       true, " is turned upright as its EXIF data say"},
      {"moving.png",
       [](const std::string& file) { writeText(file, animatedPng(texture(kRows, kCols))); }, true,
       ""},
      {"moving.webp", [](const std::string& file) { saveTwo(file, noise(2 * kRows, kCols)); }, true,
       kSeveral},
      {"pages.tif", [](const std::string& file) { saveTwo(file, texture(2 * kRows, kCols)); }, true,
       kSeveral},
      {"moving.gif",
       text(std::string("GIF89a\x01\0\x01\0\x80\0\0\0\0\0\xFF\xFF\xFF,\0\0\0\0\x01\0\x01"
                        "\0\0\x02\x02\x44\x01\0;",
                        35)),
       false, kNoPicture},
      {"inks.jpg",
       [](const std::string& file) {
         saveByVips(file, cv::Mat(kRows, kCols, CV_8UC4, cv::Scalar::all(9)),
                    VIPS_INTERPRETATION_CMYK);
       },
       true, " has CMYK colours: converted to RGB"},
      {"deep.png", picture(cv::Mat(kRows, kCols, CV_16UC1, cv::Scalar(2560))), true, kSixteen},
      {"deep.tif", picture(cv::Mat(kRows, kCols, CV_16UC3, cv::Scalar::all(2560))), true, kSixteen},
      {"clear.png", picture(cv::Mat(kRows, kCols, CV_8UC4, cv::Scalar::all(9))), true,
       kTransparency},
      {"clear-gray.png",
       [](const std::string& file) {
         saveByVips(file, cv::Mat(kRows, kCols, CV_8UC2, cv::Scalar::all(9)),
                    VIPS_INTERPRETATION_B_W);
       },
       true, kTransparency},
      {"palette.png", text(palettePng()), true, "", {2, 1}},
      {"bit.png",
       [](const std::string& file) {
         cv::imwrite(file, texture(kRows, kCols), {cv::IMWRITE_PNG_BILEVEL, 1});
       },
       true, ""},
      {"bit.tif", saveOneBitTiff, true, ""},
      {"bit.pbm", text("P4 40 30\n" + std::string(std::size_t{5} * kRows, '\x5A')), true, ""},
      {"float.tif", picture(cv::Mat(kRows, kCols, CV_32FC1, cv::Scalar(0.5))), false, kDepth},
      {"nan.tif", picture(cv::Mat(kRows, kCols, CV_32FC3, cv::Scalar(std::nan(""), infinity, -1))),
       false, kDepth},
      {"long.tif", picture(cv::Mat(kRows, kCols, CV_32SC1, cv::Scalar(5))), false, kDepth},
      {"drawing.svg", text("<svg xmlns='http://www.w3.org/2000/svg' width='40' height='30'/>"),
       false, kNoPicture}};
}

class HostilePictures : public testing::TestWithParam<Row> {};

}  // namespace

TEST_P(HostilePictures, AreTakenOrLeftOutWithARemark) {
  const Row& row = GetParam();
  const TemporaryFolder folder;
  const std::string file = folder.file(row.name);
  save(folder.file("a.png"), texture(row.size.height, row.size.width));
  row.write(file);
  save(folder.file("z.png"), texture(row.size.height, row.size.width));

  testing::internal::CaptureStderr();
  RecordedNotes notes;
  const auto source =
      openPictures({folder.file("a.png"), file, folder.file("z.png")}, notes.settings());
  const std::vector<std::string> frames = namesOfRest(*source);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  const std::vector<std::string> all = {"a.png", row.name, "z.png"};
  EXPECT_EQ(frames, row.taken ? all : (std::vector<std::string>{"a.png", "z.png"}));
  EXPECT_EQ(source->skipped(), row.taken ? 0U : 1U);
  EXPECT_EQ(notes.lines, row.remark.empty()
                             ? std::vector<std::string>{}
                             : std::vector<std::string>{"'" + file + "'" + row.remark});
}

INSTANTIATE_TEST_SUITE_P(Kinds, HostilePictures, testing::ValuesIn(rows()), [](const auto& row) {
  std::string name = row.param.name;
  for (char& letter : name) {
    if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
  }
  return name;
});

TEST(HostilePicturesPixels, AnAnimationOrPagesGiveTheFirstPicture) {
  const TemporaryFolder folder;
  const cv::Mat both = texture(2 * kRows, kCols);
  saveTwo(folder.file("pages.tif"), both);
  writeText(folder.file("moving.png"), animatedPng(both.rowRange(0, kRows)));
  for (const char* name : {"pages.tif", "moving.png"}) {
    const auto source = openPictures({folder.file(name)}, {});
    EXPECT_EQ(cv::norm(source->next()->pixels, both.rowRange(0, kRows), cv::NORM_INF), 0) << name;
  }
}

TEST(HostilePicturesPixels, OneBitIsBlackAndWhite) {
  const TemporaryFolder folder;
  writeText(folder.file("bit.pbm"), std::string("P4 8 1\n\xA5", 8));
  const cv::Mat expected = (cv::Mat_<unsigned char>(1, 8) << 0, 255, 0, 255, 255, 0, 255, 0);
  const auto source = openPictures({folder.file("bit.pbm")}, {});
  EXPECT_EQ(cv::norm(source->next()->pixels, expected, cv::NORM_INF), 0);
}

TEST(HostilePicturesPixels, APictureThatGrewMeanwhileIsNotDecoded) {
  const TemporaryFolder folder;
  save(folder.file("a.png"), texture(kRows, kCols));
  save(folder.file("b.png"), texture(kRows, kCols));
  RecordedNotes notes;
  const auto source = openPictures({folder.file("a.png"), folder.file("b.png")}, notes.settings());
  writeText(folder.file("b.png"), hollowPng(50000, 60000));
  EXPECT_EQ(namesOfRest(*source), std::vector<std::string>{"a.png"});
  EXPECT_EQ(notes.lines,
            std::vector<std::string>{"'" + folder.file("b.png") +
                                     "' has 50000 x 60000 pixels, more than 12000 a side: left "
                                     "out"});
}
