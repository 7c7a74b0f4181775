#include "app/icon_shrink.h"

#include <gtest/gtest.h>

namespace marigold {
namespace {

RgbaImage Pattern(std::uint32_t width, std::uint32_t height) {
  RgbaImage image{width, height, {}};
  for (std::uint32_t i = 0; i < width * height; ++i) {
    image.pixels.insert(image.pixels.end(), {static_cast<std::uint8_t>(i % width * 7),
                                             static_cast<std::uint8_t>(i / width * 5), 77, 255});
  }
  return image;
}

TEST(IconShrink, EncodedImagesDecodeToTheSamePixels) {
  const RgbaImage image = Pattern(40, 23);
  const std::optional<RgbaImage> decoded = DecodeTiff(EncodeTiffLzw(image).value());
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(decoded->width, 40u);
  EXPECT_EQ(decoded->height, 23u);
  EXPECT_EQ(decoded->pixels, image.pixels);
}

TEST(IconShrink, OnlyImagesLargerThan64OnASideBecome64By64) {
  const struct { std::uint32_t width, height; bool shrunk; } cases[] = {
      {64, 64, false}, {10, 64, false}, {1, 1, false}, {65, 64, true}, {64, 65, true}, {300, 20, true}};
  for (const auto& c : cases) {
    const std::optional<PlistData> result = ShrinkIconData(*EncodeTiffLzw(Pattern(c.width, c.height)));
    ASSERT_EQ(result.has_value(), c.shrunk) << c.width << "x" << c.height;
    if (!result) continue;
    const std::optional<RgbaImage> small = DecodeTiff(*result);
    EXPECT_EQ(std::make_pair(small->width, small->height), std::make_pair(64u, 64u));
  }
}

TEST(IconShrink, ScalingAveragesTheCoveredAreaAndRepeatsWhenEnlarging) {
  RgbaImage checker{4, 2, {}};
  for (int i = 0; i < 8; ++i) {
    const std::uint8_t v = ((i % 4) + (i / 4)) % 2 ? 255 : 0;
    checker.pixels.insert(checker.pixels.end(), {v, v, v, 255});
  }
  EXPECT_EQ(ScaleImage(checker, 2, 1).pixels, (std::vector<std::uint8_t>{128, 128, 128, 255, 128, 128, 128, 255}));
  EXPECT_EQ(ScaleImage(RgbaImage{1, 1, {9, 8, 7, 6}}, 2, 1).pixels,
            (std::vector<std::uint8_t>{9, 8, 7, 6, 9, 8, 7, 6}));
}

TEST(IconShrink, DataThatIsNoUsableImageIsLeftAlone) {
  const PlistData good = *EncodeTiffLzw(Pattern(100, 100));
  const PlistData bad[] = {
      {},
      PlistData(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(good.size() / 3)),
      PlistData(5000, 0xff),
      {'I', 'I', 42, 0, 0xff, 0xff, 0xff, 0x7f},  // its directory lies far past the end
      // 2^31 by 2^31 pixels: refused before any raster is allocated.
      {'I', 'I', 42, 0, 8, 0, 0, 0, 3, 0, 0, 1, 4, 0, 1, 0, 0, 0, 0, 0, 0, 0x80, 1, 1, 4, 0, 1, 0,
       0, 0, 0, 0, 0, 0x80, 3, 1, 3, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0},
  };
  for (const PlistData& data : bad) EXPECT_FALSE(ShrinkIconData(data).has_value()) << data.size();
  EXPECT_FALSE(EncodeTiffLzw(RgbaImage{2, 2, {1, 2, 3}}).has_value());
}

}  // namespace
}  // namespace marigold
