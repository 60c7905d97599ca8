// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/content_hash.h"

#include <gtest/gtest.h>

#include <string>

#include "scenes.h"
#include "temporary_folder.h"

using framequilt::tool::checksumOf;
using framequilt::tool::hashOfFile;
using framequilt::tool::hashOfPixels;

TEST(ContentHash, IsThatOfThePublishedAlgorithm) {
  const TemporaryFolder folder;
  writeText(folder.file("empty"), "");
  EXPECT_EQ(hashOfFile(folder.file("empty")), "99aa06d3014798d86001c324468d497f");
  EXPECT_EQ(checksumOf("", 0), 0x2d06800538d394c2U);
}

TEST(ContentHash, TellsFilesApart) {
  const TemporaryFolder folder;
  const std::string large(std::size_t{3} << 20U, 'a');  // More than is read at once.
  writeText(folder.file("a"), large);
  writeText(folder.file("same"), large);
  writeText(folder.file("longer"), large + "a");
  writeText(folder.file("other"), large.substr(0, large.size() - 1) + "b");
  EXPECT_EQ(hashOfFile(folder.file("a")), hashOfFile(folder.file("same")));
  EXPECT_NE(hashOfFile(folder.file("a")), hashOfFile(folder.file("longer")));
  EXPECT_NE(hashOfFile(folder.file("a")), hashOfFile(folder.file("other")));
}

TEST(ContentHash, AFileThatCannotBeReadHasNone) {
  EXPECT_FALSE(hashOfFile("/nowhere/f.png"));
  EXPECT_FALSE(hashOfFile("/"));
}

TEST(ContentHash, PixelsCountNotHowTheyLie) {
  const cv::Mat whole = noise(20, 30);
  const cv::Mat part = whole(cv::Rect(4, 5, 10, 6));
  EXPECT_EQ(hashOfPixels(part), hashOfPixels(part.clone()));
  cv::Mat other = part.clone();
  other.ptr(5)[29] ^= 1;
  EXPECT_NE(hashOfPixels(part), hashOfPixels(other));
}

TEST(ContentHash, TheShapeCounts) {
  const cv::Mat zeros(6, 4, CV_8UC1, cv::Scalar(0));
  EXPECT_NE(hashOfPixels(zeros), hashOfPixels(zeros.reshape(1, 4)));
  EXPECT_NE(hashOfPixels(zeros), hashOfPixels(zeros.reshape(2)));
}
