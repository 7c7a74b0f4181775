// Volume icons kept in documents are TIFF images of at most 64 by 64. Older documents stored
// full-size icons; the upgrade replaces those by a 64 by 64 thumbnail. Decoding and encoding are
// done in memory with libtiff; nothing here touches the disk.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "util/plist_value.h"

namespace marigold {

inline constexpr std::uint32_t kMaxIconSide = 64;

// An 8-bit RGBA raster, top row first, alpha premultiplied (as libtiff's RGBA reader gives it).
struct RgbaImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;  // width * height * 4 bytes
};

// Decodes the first image of TIFF bytes; nothing when the bytes are not a TIFF libtiff can read,
// or the image is empty or unreasonably large. Never prints libtiff's diagnostics.
std::optional<RgbaImage> DecodeTiff(const PlistData& data);
// Encodes as an RGBA TIFF with LZW compression; nothing when the image is empty or libtiff fails.
std::optional<PlistData> EncodeTiffLzw(const RgbaImage& image);
// Resamples to exactly width x height by averaging the source area each target pixel covers.
RgbaImage ScaleImage(const RgbaImage& image, std::uint32_t width, std::uint32_t height);
// The icon as documents keep it: a 64 by 64 LZW thumbnail when `data` decodes to an image wider
// or higher than 64; nothing (leave the data as it is) when it is small enough or does not decode.
std::optional<PlistData> ShrinkIconData(const PlistData& data);

}  // namespace marigold
