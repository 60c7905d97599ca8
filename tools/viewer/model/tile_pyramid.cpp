// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/tile_pyramid.h"

#include <algorithm>
#include <cstring>

#include "tools/viewer/model/grid.h"

namespace framequilt::viewer {
namespace {

constexpr int kSide = TilePyramid::kTileSide;
constexpr int kBytesPerPixel = 4;

/// Copies `area` of one picture to `to` of another.
void copyPixels(const QImage& from, const cv::Rect& area, QImage& into, cv::Point to) {
  const std::size_t bytes = static_cast<std::size_t>(area.width) * kBytesPerPixel;
  for (int r = 0; r < area.height; ++r) {
    std::memcpy(
        into.scanLine(to.y + r) + static_cast<std::ptrdiff_t>(to.x) * kBytesPerPixel,
        from.constScanLine(area.y + r) + static_cast<std::ptrdiff_t>(area.x) * kBytesPerPixel,
        bytes);
  }
}

template <class Visit>
void forEachTile(int level, const cv::Rect& pixels, Visit visit) {
  const cv::Rect tiles = cellsOver(pixels, kSide);
  for (int y = tiles.y; y < tiles.br().y; ++y) {
    for (int x = tiles.x; x < tiles.br().x; ++x) visit(TileKey{level, x, y});
  }
}

/// In pixels of its level.
cv::Rect pixelsOf(const TileKey& key) { return {key.x * kSide, key.y * kSide, kSide, kSide}; }

}  // namespace

TilePyramid::TilePyramid(std::size_t loadedBytes) : mostBytes_(loadedBytes) {}

void TilePyramid::clear() {
  kept_.clear();
  loaded_.clear();
  requested_.clear();
  outdated_.clear();
  loadedBytes_ = 0;
  area_ = {};
}

cv::Rect TilePyramid::areaOf(const TileKey& key) {
  return viewer::pixelsOf(pixelsOf(key), 1 << key.level);
}

void TilePyramid::apply(const MosaicPatch& patch) {
  if (patch.area.empty()) return;
  area_ |= patch.area;
  patchLoaded(patch);
  patchKept(patch);
}

void TilePyramid::patchLoaded(const MosaicPatch& patch) {
  for (int level = 0; level < kKeptLevel; ++level) {
    const cv::Rect area = cellsOver(patch.area, 1 << level);
    forEachTile(level, area, [&](const TileKey& key) {
      if (requested_.count(key) != 0) outdated_.insert(key);
      const auto found = loaded_.find(key);
      if (found == loaded_.end()) return;
      this->patch(found->second.pixels, key, patch.levels[static_cast<std::size_t>(level)], area);
    });
  }
}

void TilePyramid::patchKept(const MosaicPatch& patch) {
  cv::Rect changed = cellsOver(patch.area, 1 << kKeptLevel);
  forEachTile(kKeptLevel, changed, [&](const TileKey& key) {
    this->patch(kept(key), key, patch.levels[kKeptLevel], changed);
  });
  for (int level = kKeptLevel + 1; level <= kTopLevel; ++level) changed = halveUp(changed, level);
}

/// \param area  What `pixels` covers, in pixels of the tile's level.
void TilePyramid::patch(QImage& tile, const TileKey& key, const QImage& pixels,
                        const cv::Rect& area) {
  const cv::Rect common = area & pixelsOf(key);
  copyPixels(pixels, common - area.tl(), tile, common.tl() - pixelsOf(key).tl());
}

/// Makes a level anew where the one below has changed; returns where, in its own pixels.
cv::Rect TilePyramid::halveUp(const cv::Rect& changed, int level) {
  const cv::Rect area = cellsOver(changed, 2);
  const cv::Rect below = viewer::pixelsOf(area, 2);
  forEachTile(level - 1, below, [&](const TileKey& source) {
    const auto found = kept_.find(source);
    if (found == kept_.end()) return;
    const cv::Rect part = below & pixelsOf(source);
    const cv::Rect inside = part - pixelsOf(source).tl();
    const QImage half = halved(found->second.copy(inside.x, inside.y, inside.width, inside.height));
    const TileKey target{level, floorDiv(source.x, 2), floorDiv(source.y, 2)};
    patch(kept(target), target, half, cellsOver(part, 2));
  });
  return area;
}

QImage& TilePyramid::kept(const TileKey& key) {
  QImage& tile = kept_[key];
  if (tile.isNull()) {
    tile = QImage(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    tile.fill(Qt::transparent);
  }
  return tile;
}

const QImage* TilePyramid::find(const TileKey& key) {
  if (key.level >= kKeptLevel) {
    const auto found = kept_.find(key);
    return found == kept_.end() ? nullptr : &found->second;
  }
  const auto found = loaded_.find(key);
  if (found == loaded_.end()) return nullptr;
  found->second.lastUse = ++uses_;
  return &found->second.pixels;
}

bool TilePyramid::empty(const TileKey& key) const {
  const int up = std::max(0, kKeptLevel - key.level);
  const TileKey above{key.level + up, floorDiv(key.x, 1 << up), floorDiv(key.y, 1 << up)};
  return kept_.find(above) == kept_.end();
}

bool TilePyramid::request(const TileKey& key) {
  if (key.level >= kKeptLevel || empty(key) || loaded_.count(key) != 0) return false;
  return requested_.insert(key).second;
}

bool TilePyramid::insert(const TileKey& key, const QImage& pixels) {
  const bool wanted = requested_.erase(key) != 0;
  const bool outdated = outdated_.erase(key) != 0;
  if (!wanted || outdated) return false;
  loaded_[key] = {pixels, ++uses_};
  loadedBytes_ += static_cast<std::size_t>(pixels.sizeInBytes());
  forgetOldest();
  return true;
}

/// A quarter at once, so that it is not gone through for every tile.
void TilePyramid::forgetOldest() {
  if (loadedBytes_ <= mostBytes_) return;
  std::vector<std::pair<std::uint64_t, TileKey>> byAge;
  byAge.reserve(loaded_.size());
  for (const auto& [key, tile] : loaded_) byAge.emplace_back(tile.lastUse, key);
  std::sort(byAge.begin(), byAge.end());
  for (const auto& [age, key] : byAge) {
    if (loadedBytes_ <= mostBytes_ / 4 * 3) return;
    const auto found = loaded_.find(key);
    loadedBytes_ -= static_cast<std::size_t>(found->second.pixels.sizeInBytes());
    loaded_.erase(found);
  }
}

}  // namespace framequilt::viewer
