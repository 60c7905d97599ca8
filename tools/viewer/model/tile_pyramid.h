// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <cstddef>
#include <cstdint>
#include <map>
#include <opencv2/core/types.hpp>
#include <set>
#include <tuple>

#include "tools/viewer/model/mosaic_patch.h"

namespace framequilt::viewer {

/// A square of the mosaic at one size: pixel (0, 0) of tile (0, 0) is the mosaic's steady origin,
/// and a pixel of level n stands for 2^n by 2^n of the mosaic's.
struct TileKey {
  int level = 0;
  int x = 0;
  int y = 0;

  friend bool operator<(const TileKey& a, const TileKey& b) {
    return std::tie(a.level, a.x, a.y) < std::tie(b.level, b.x, b.y);
  }
  friend bool operator==(const TileKey& a, const TileKey& b) {
    return std::tie(a.level, a.x, a.y) == std::tie(b.level, b.x, b.y);
  }
};

/// The mosaic in tiles of falling size, so that drawing takes the same time at any zoom.
///
/// From level 2 on every tile is kept, a twelfth of the mosaic's memory in all; tiles of the two
/// levels below are loaded when they are looked at, and the ones that were not seen for longest
/// give way. What a frame changed is patched into the tiles that are here.
///
/// Used from one thread.
class TilePyramid {
 public:
  static constexpr int kTileSide = 256;
  static constexpr int kKeptLevel = kPatchLevels - 1;
  static constexpr int kTopLevel = 8;

  /// \param loadedBytes  That many bytes of loaded tiles may stay.
  explicit TilePyramid(std::size_t loadedBytes = std::size_t{256} << 20);

  void clear();

  /// Takes over what a frame changed.
  void apply(const MosaicPatch& patch);

  /// The pixels of a tile; null when it is not here.
  const QImage* find(const TileKey& key);

  /// Whether no frame lies in the tile.
  bool empty(const TileKey& key) const;

  /// True when the tile has to be loaded and nobody does so yet; from now on somebody does.
  bool request(const TileKey& key);

  /// A loaded tile. False when the mosaic changed in it meanwhile, or when nobody asked: it is not
  /// taken, and can be asked for again.
  bool insert(const TileKey& key, const QImage& pixels);

  /// The box of all patches, in steady mosaic pixels.
  cv::Rect area() const { return area_; }

  std::size_t loadedBytes() const { return loadedBytes_; }

  /// What a tile covers, in steady mosaic pixels.
  static cv::Rect areaOf(const TileKey& key);

 private:
  struct Loaded {
    QImage pixels;
    std::uint64_t lastUse = 0;
  };

  QImage& kept(const TileKey& key);
  void patch(QImage& tile, const TileKey& key, const QImage& pixels, const cv::Rect& area);
  void patchLoaded(const MosaicPatch& patch);
  void patchKept(const MosaicPatch& patch);
  cv::Rect halveUp(const cv::Rect& changed, int level);
  void forgetOldest();

  std::size_t mostBytes_;
  std::size_t loadedBytes_ = 0;
  std::uint64_t uses_ = 0;
  cv::Rect area_;
  std::map<TileKey, QImage> kept_;
  std::map<TileKey, Loaded> loaded_;
  std::set<TileKey> requested_;
  std::set<TileKey> outdated_;  // Requested, and changed since.
};

}  // namespace framequilt::viewer
