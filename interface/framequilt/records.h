// SPDX-License-Identifier: Apache-2.0
/// \file
/// Plain records that the entry points take and fill.
#pragma once

#include <type_traits>

/// The shape of a packed 8-bit image: rows top to bottom without padding, so that byte k of
/// pixel (r, c) lies at index (r * cols + c) * channels + k. Colour bytes are blue, green, red.
struct imgInfo {
  int reserved;  ///< Never read; 0 wherever the library fills a record itself.
  int channels;  ///< Bytes per pixel: 3 (colour) or 1 (gray).
  int rows;      ///< Height in pixels.
  int cols;      ///< Width in pixels.
};

/// A point in pixels; in match lists a pair of indices instead.
struct SPoint {
  int x;  ///< Column; in a match: the index of the corner in the second image's list.
  int y;  ///< Row; in a match: the index of the corner in the first image's list.
};

/// What was measured and decided for a frame. Every field is 0 when a run starts; a field keeps
/// its value until a later frame writes it, also when that frame was refused half-way.
struct stitchflags {
  float brightOne;      ///< Mean brightness (0..255) of the mosaic's part of the overlap.
  float brightTwo;      ///< Mean brightness (0..255) of the new frame's part of the overlap.
  float definitionOne;  ///< Sharpness of the mosaic's part; NaN where nothing was strong enough.
  float definitionTwo;  ///< Sharpness of the new frame's part; NaN likewise.
  int matchNum;         ///< Corner pairs that agree on the offset.
  int offsetX;          ///< Columns from the previous frame to the new one, in working pixels.
  int offsetY;          ///< Rows from the previous frame to the new one, in working pixels.
  SPoint position;      ///< Top-left corner of the frame placed last, in mosaic pixels.
  int stitch_flags;     ///< 1 when the new frame qualifies to be blended, else 0.
};

static_assert(sizeof(imgInfo) == 16 && std::is_trivially_copyable_v<imgInfo>);
static_assert(sizeof(SPoint) == 8 && std::is_trivially_copyable_v<SPoint>);
static_assert(sizeof(stitchflags) == 40 && std::is_trivially_copyable_v<stitchflags>);
