#include "frame_format.h"

#include <cinttypes>
#include <cstring>

#include "failure.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint16_t kImageGroup = 0x0028;
constexpr std::uint16_t kBitsAllocated = 0x0100;
constexpr std::uint16_t kHighBit = 0x0102;
constexpr std::uint16_t kPixelRepresentation = 0x0103;

constexpr std::uint32_t kMostSamples = 4;

void RequireBits(const FrameFormat& format) {
  const std::uint32_t allocated = format.bitsAllocated;
  if (allocated != 1 && allocated != 8 && allocated != 16 && allocated != 32) {
    Fail("Bits Allocated is %u, which is not 1, 8, 16 or 32", allocated);
  }
  if (format.bitsStored == 0 || format.bitsStored > allocated) {
    Fail("Bits Stored is %u of %u allocated", format.bitsStored, allocated);
  }
}

}  // namespace

FrameFormat ReadFrameFormat(const DICOMObject* object, const ImageInfo& info) {
  FrameFormat format;
  format.rows = info.Rows;
  format.columns = info.Columns;
  format.samples = info.Samples;
  format.bitsAllocated = tessaret_codec_uint16(object, kImageGroup, kBitsAllocated);
  format.bitsStored = info.BitsStored;
  format.highBit = tessaret_codec_uint16(object, kImageGroup, kHighBit);
  format.isSigned = tessaret_codec_uint16(object, kImageGroup, kPixelRepresentation) != 0;
  format.isPlanar = info.PlaneSize != 1;
  format.photometric.assign(info.Photometric, ::strnlen(info.Photometric, sizeof info.Photometric));
  if (format.rows == 0 || format.columns == 0 || format.samples == 0) {
    Fail("%u rows of %u columns with %u samples hold no pixels", format.rows, format.columns,
         format.samples);
  }
  if (format.samples > kMostSamples) Fail("%u samples per pixel are too many", format.samples);
  RequireBits(format);
  if (format.Size() != info.FrameSize) {
    Fail("a frame of %u bytes does not go with %u x %u pixels", info.FrameSize, format.columns,
         format.rows);
  }
  return format;
}

void RequireHighBit(const FrameFormat& format) {
  if (format.highBit >= format.bitsAllocated || format.highBit + 1 < format.bitsStored) {
    Fail("High Bit is %u where %u bits of %u are stored", format.highBit, format.bitsStored,
         format.bitsAllocated);
  }
}

void RequirePlausible(std::uint64_t stream, std::uint64_t samples, std::uint64_t samplesPerByte) {
  // Divided, not multiplied: the numbers are anybody's.
  if (samples / samplesPerByte > stream) {
    Fail("%" PRIu64 " bytes cannot hold %" PRIu64 " samples", stream, samples);
  }
}

void RequireSameShape(const StreamShape& shape, const FrameFormat& format) {
  if (shape.columns != format.columns || shape.rows != format.rows) {
    Fail("the code stream has %u x %u pixels, the data set %u x %u", shape.columns, shape.rows,
         format.columns, format.rows);
  }
  if (shape.components != format.samples) {
    Fail("the code stream has %u components, the data set %u samples per pixel", shape.components,
         format.samples);
  }
  if (shape.precision > format.bitsAllocated) {
    Fail("the code stream has samples of %u bits, the data set allocates %u", shape.precision,
         format.bitsAllocated);
  }
}

}  // namespace tessaret::codecs
