#include "app/icon_shrink.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace marigold {
namespace {

// A larger icon is damaged or hostile rather than an icon: refuse it before allocating a raster.
constexpr std::uint64_t kMaxDecodedPixels = 16u * 1024u * 1024u;

// The bytes libtiff reads from or writes to, with a cursor, standing in for a file.
struct MemoryFile {
  std::vector<std::uint8_t> bytes;
  std::uint64_t position = 0;
};

tmsize_t ReadProc(thandle_t handle, void* buffer, tmsize_t size) {
  auto* file = static_cast<MemoryFile*>(handle);
  if (size <= 0 || file->position >= file->bytes.size()) return 0;
  const std::uint64_t count =
      std::min<std::uint64_t>(static_cast<std::uint64_t>(size), file->bytes.size() - file->position);
  std::memcpy(buffer, file->bytes.data() + file->position, count);
  file->position += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t WriteProc(thandle_t handle, void* buffer, tmsize_t size) {
  auto* file = static_cast<MemoryFile*>(handle);
  if (size <= 0) return 0;
  const std::uint64_t end = file->position + static_cast<std::uint64_t>(size);
  if (end > file->bytes.size()) file->bytes.resize(end);
  std::memcpy(file->bytes.data() + file->position, buffer, static_cast<std::size_t>(size));
  file->position = end;
  return size;
}

toff_t SeekProc(thandle_t handle, toff_t offset, int whence) {
  auto* file = static_cast<MemoryFile*>(handle);
  std::int64_t base = 0;
  switch (whence) {
    case SEEK_SET: base = 0; break;
    case SEEK_CUR: base = static_cast<std::int64_t>(file->position); break;
    case SEEK_END: base = static_cast<std::int64_t>(file->bytes.size()); break;
    default: return static_cast<toff_t>(-1);
  }
  const std::int64_t target = base + static_cast<std::int64_t>(offset);
  if (target < 0) return static_cast<toff_t>(-1);
  file->position = static_cast<std::uint64_t>(target);
  return file->position;
}

int CloseProc(thandle_t) { return 0; }
toff_t SizeProc(thandle_t handle) { return static_cast<MemoryFile*>(handle)->bytes.size(); }
int MapProc(thandle_t, void**, toff_t*) { return 0; }
void UnmapProc(thandle_t, void*, toff_t) {}

int Quiet(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct TiffClose {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPtr = std::unique_ptr<TIFF, TiffClose>;

TiffPtr OpenMemory(MemoryFile& file, const char* mode) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options, Quiet, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options, Quiet, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, 256 * 1024 * 1024);
  TIFF* tiff = TIFFClientOpenExt("icon", mode, &file, ReadProc, WriteProc, SeekProc, CloseProc,
                                 SizeProc, MapProc, UnmapProc, options);
  TIFFOpenOptionsFree(options);
  return TiffPtr(tiff);
}

}  // namespace

std::optional<RgbaImage> DecodeTiff(const PlistData& data) {
  if (data.size() < 8) return std::nullopt;
  MemoryFile file{data, 0};
  // "m" keeps libtiff from memory-mapping our handle.
  TiffPtr tiff = OpenMemory(file, "rm");
  if (!tiff) return std::nullopt;
  std::uint32_t width = 0, height = 0;
  if (!TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width) ||
      !TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) || width == 0 || height == 0 ||
      static_cast<std::uint64_t>(width) * height > kMaxDecodedPixels) {
    return std::nullopt;
  }
  char message[1024] = {0};
  if (!TIFFRGBAImageOK(tiff.get(), message)) return std::nullopt;
  std::vector<std::uint32_t> raster(static_cast<std::size_t>(width) * height);
  if (!TIFFReadRGBAImageOriented(tiff.get(), width, height, raster.data(), ORIENTATION_TOPLEFT, 0)) {
    return std::nullopt;
  }
  RgbaImage image{width, height, std::vector<std::uint8_t>(raster.size() * 4)};
  for (std::size_t i = 0; i < raster.size(); ++i) {
    image.pixels[i * 4 + 0] = static_cast<std::uint8_t>(TIFFGetR(raster[i]));
    image.pixels[i * 4 + 1] = static_cast<std::uint8_t>(TIFFGetG(raster[i]));
    image.pixels[i * 4 + 2] = static_cast<std::uint8_t>(TIFFGetB(raster[i]));
    image.pixels[i * 4 + 3] = static_cast<std::uint8_t>(TIFFGetA(raster[i]));
  }
  return image;
}

std::optional<PlistData> EncodeTiffLzw(const RgbaImage& image) {
  if (image.width == 0 || image.height == 0 ||
      image.pixels.size() != static_cast<std::size_t>(image.width) * image.height * 4) {
    return std::nullopt;
  }
  MemoryFile file;
  {
    TiffPtr tiff = OpenMemory(file, "w");
    if (!tiff) return std::nullopt;
    const std::uint16_t extra[] = {EXTRASAMPLE_ASSOCALPHA};
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, image.width);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, image.height);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 4);
    TIFFSetField(tiff.get(), TIFFTAG_EXTRASAMPLES, 1, extra);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(tiff.get(), TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff.get(), 0));
    std::vector<std::uint8_t> row(static_cast<std::size_t>(image.width) * 4);
    for (std::uint32_t y = 0; y < image.height; ++y) {
      // libtiff may encode in place, so each row goes through a scratch copy.
      std::memcpy(row.data(), image.pixels.data() + static_cast<std::size_t>(y) * row.size(), row.size());
      if (TIFFWriteScanline(tiff.get(), row.data(), y, 0) < 0) return std::nullopt;
    }
    if (!TIFFFlush(tiff.get())) return std::nullopt;
  }
  return std::move(file.bytes);
}

RgbaImage ScaleImage(const RgbaImage& image, std::uint32_t width, std::uint32_t height) {
  RgbaImage result{width, height, std::vector<std::uint8_t>(static_cast<std::size_t>(width) * height * 4)};
  if (image.width == 0 || image.height == 0 || width == 0 || height == 0) return result;
  for (std::uint32_t y = 0; y < height; ++y) {
    // The source rows this target row covers; at least one, so enlarging repeats pixels.
    const std::uint64_t y0 = static_cast<std::uint64_t>(y) * image.height / height;
    const std::uint64_t y1 = std::max<std::uint64_t>(
        y0 + 1, static_cast<std::uint64_t>(y + 1) * image.height / height);
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::uint64_t x0 = static_cast<std::uint64_t>(x) * image.width / width;
      const std::uint64_t x1 = std::max<std::uint64_t>(
          x0 + 1, static_cast<std::uint64_t>(x + 1) * image.width / width);
      std::uint64_t sum[4] = {0, 0, 0, 0};
      for (std::uint64_t sy = y0; sy < y1; ++sy) {
        const std::uint8_t* src = image.pixels.data() + (sy * image.width + x0) * 4;
        for (std::uint64_t sx = x0; sx < x1; ++sx, src += 4) {
          for (int c = 0; c < 4; ++c) sum[c] += src[c];
        }
      }
      const std::uint64_t count = (y1 - y0) * (x1 - x0);
      std::uint8_t* dst = result.pixels.data() + (static_cast<std::size_t>(y) * width + x) * 4;
      for (int c = 0; c < 4; ++c) dst[c] = static_cast<std::uint8_t>((sum[c] + count / 2) / count);
    }
  }
  return result;
}

std::optional<PlistData> ShrinkIconData(const PlistData& data) {
  std::optional<RgbaImage> image = DecodeTiff(data);
  if (!image || (image->width <= kMaxIconSide && image->height <= kMaxIconSide)) return std::nullopt;
  return EncodeTiffLzw(ScaleImage(*image, kMaxIconSide, kMaxIconSide));
}

}  // namespace marigold
