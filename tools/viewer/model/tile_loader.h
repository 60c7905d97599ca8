// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "tools/viewer/model/mailbox.h"
#include "tools/viewer/model/tile_pyramid.h"

namespace framequilt::viewer {

/// Reads tiles of the two finest levels on a thread of its own, so that the window never waits for
/// a frame that is being blended.
class TileLoader {
 public:
  struct Tile {
    TileKey key;
    QImage pixels;
    int mosaic = 0;  ///< As `open` counted them.
  };

  /// \param onTiles  Called on the loader's thread when tiles lie in `take`.
  explicit TileLoader(std::function<void()> onTiles);
  ~TileLoader();
  TileLoader(const TileLoader&) = delete;
  TileLoader& operator=(const TileLoader&) = delete;

  /// From now on tiles come from this mosaic; older requests are forgotten. \returns its number.
  int open(MosaicReader reader);

  /// The newest request is served first: it is what the user looks at.
  void request(const TileKey& key);

  /// Tiles that were read, also such of mosaics before.
  std::vector<Tile> take() { return tiles_.take(); }

 private:
  void work();

  Mailbox<Tile> tiles_;
  std::mutex mutex_;
  std::condition_variable asked_;
  MosaicReader reader_;
  int mosaic_ = 0;
  std::vector<TileKey> wanted_;
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace framequilt::viewer
