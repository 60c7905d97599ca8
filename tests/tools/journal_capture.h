// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "picture_files.h"
#include "scenes.h"
#include "temporary_folder.h"

/// A report whose frames took no time.
inline std::string withoutTimes(std::string report) {
  const std::string key = "\"milliseconds\": ";
  for (std::size_t at = 0; (at = report.find(key, at)) != std::string::npos;) {
    at += key.size();
    report.erase(at, report.find_first_not_of("0123456789.e-", at) - at);
  }
  return report;
}

/// A small capture with frames that are joined, refused, left out by their size and damaged, and
/// the files that a run over it writes.
class JournalCapture : public testing::Test {
 protected:
  static constexpr int kRows = 150;
  static constexpr int kCols = 200;
  /// Frames that a run decides on.
  static constexpr int kFrames = 7;

  void SetUp() override {
    const cv::Mat scene = texture(kRows, 600);
    const auto frame = [&](int x) { return scene(cv::Rect(x, 0, kCols, kRows)); };
    save(picture("f1.png"), frame(0));
    save(picture("f2.png"), frame(80));
    save(picture("f3.png"), texture(kRows, kCols, 99));  // Of elsewhere.
    save(picture("f4.png"), texture(kRows, 120));
    save(picture("f5.png"), frame(86));  // Hardly moved.
    save(picture("f6.png"), frame(160));
    save(picture("f7.png"), frame(200));
    cutInHalf(picture("f7.png"));
    save(picture("f8.png"), frame(240));
    save(picture("f9.png"), frame(330));
  }

  std::string picture(const std::string& name) const { return pictures_.file(name); }
  std::string journal() const { return work_.file("j"); }
  std::string journalFile() const { return work_.file("j/journal.jsonl"); }
  std::string mosaic() const { return work_.file("mosaic.png"); }
  std::string placements() const { return work_.file("placements.csv"); }
  std::string report() const { return work_.file("report.json"); }

  /// What a run has written, without times; empty where something is missing.
  std::string results() const {
    const std::string timed = readText(report());
    if (timed.empty() || readText(mosaic()).empty() || readText(placements()).empty()) return {};
    return readText(mosaic()) + readText(placements()) + withoutTimes(timed);
  }
  void removeResults() const {
    for (const std::string& file : {mosaic(), placements(), report()}) {
      std::filesystem::remove(file);
    }
  }

  /// The lines of the journal, each with its line end.
  std::vector<std::string> lines() const {
    std::vector<std::string> found;
    const std::string text = readText(journalFile());
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
      found.push_back(text.substr(begin, end - begin));
      begin = end;
    }
    return found;
  }

  /// Puts a journal with this text in place of what there is.
  void putJournal(const std::string& text) const {
    std::filesystem::remove_all(journal());
    std::filesystem::create_directory(journal());
    writeText(journalFile(), text);
  }

  TemporaryFolder pictures_, work_;
};
