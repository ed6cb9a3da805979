#include "jpeg/dct8_encoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "failure.h"
#include "jpeg/jpeg_library.h"
#include "jpeg/vector_destination.h"

namespace tessaret::codecs {
namespace {

/// Rows that are handed over at once.
constexpr std::size_t kRows = 16;

struct Session {
  Session(Bytes frameBytes, const FrameFormat& frameFormat, std::uint32_t jpegQuality)
      : frame(frameBytes), format(frameFormat), quality(static_cast<int>(jpegQuality)) {
    UseErrors(*reinterpret_cast<j_common_ptr>(&library), errors);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { jpeg_destroy_compress(&library); }

  JpegErrors errors;
  jpeg_compress_struct library{};
  VectorDestination destination;
  Bytes frame;
  const FrameFormat& format;
  int quality;
};

void Prepare(Session& session) {
  jpeg_compress_struct& library = session.library;
  jpeg_create_compress(&library);
  UseDestination(library, session.destination);
  library.image_width = session.format.columns;
  library.image_height = session.format.rows;
  library.input_components = static_cast<int>(session.format.samples);
  const J_COLOR_SPACE colours = session.format.photometric == "RGB" ? JCS_RGB : JCS_YCbCr;
  library.in_color_space = session.format.samples == 1 ? JCS_GRAYSCALE : colours;
  jpeg_set_defaults(&library);
  jpeg_set_quality(&library, session.quality, TRUE);
  library.dct_method = JDCT_ISLOW;
  if (session.format.samples == 3) {
    library.comp_info[0].h_samp_factor = 2;
    library.comp_info[0].v_samp_factor = 1;
  }
}

void Write(Session& session) {
  Prepare(session);
  jpeg_compress_struct& library = session.library;
  jpeg_start_compress(&library, TRUE);
  const auto size = static_cast<std::size_t>(session.format.RowSize());
  std::array<JSAMPROW, kRows> rows{};
  while (library.next_scanline < library.image_height) {
    const std::size_t left = library.image_height - library.next_scanline;
    const std::size_t count = std::min(left, kRows);
    const std::uint8_t* place = session.frame.data() + library.next_scanline * size;
    // The library only reads them.
    for (std::size_t at = 0; at < count; ++at) {
      rows[at] = const_cast<std::uint8_t*>(place + at * size);
    }
    jpeg_write_scanlines(&library, rows.data(), static_cast<JDIMENSION>(count));
  }
  jpeg_finish_compress(&library);
}

}  // namespace

void RequireDct8(const FrameFormat& format) {
  if (format.bitsAllocated != 8 || format.bitsStored != 8) {
    Fail("samples of %u bits in %u are not encoded, only those of 8 in 8", format.bitsStored,
         format.bitsAllocated);
  }
  if (format.isSigned) Fail("signed samples are not encoded");
  if (format.rows > JPEG_MAX_DIMENSION || format.columns > JPEG_MAX_DIMENSION) {
    Fail("%u x %u pixels are more than the JPEG library encodes", format.columns, format.rows);
  }
  const std::string& photometric = format.photometric;
  const bool isColour = photometric == "RGB" || photometric == "YBR_FULL";
  const bool isGray = photometric == "MONOCHROME1" || photometric == "MONOCHROME2";
  if (!(format.samples == 1 && isGray) && !(format.samples == 3 && isColour)) {
    Fail("%u samples of \"%s\" are not encoded with losses", format.samples, photometric.c_str());
  }
}

std::vector<std::uint8_t> EncodeDct8(Bytes frame, const FrameFormat& format,
                                     std::uint32_t quality) {
  Session session(frame, format, quality);
  RunStep(session, Write);
  return std::move(session.destination.stream);
}

}  // namespace tessaret::codecs
