#include "jpeg/dct8_decoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "failure.h"
#include "jpeg/jpeg_colours.h"
#include "jpeg/jpeg_library.h"
#include "jpeg/memory_source.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kPrecision = 8;

/// Each scan walks over the whole image, for next to no bytes. Encoders make a dozen.
constexpr int kMostScans = 64;

/// Rows that are asked for at once; the library makes up to four.
constexpr std::size_t kRows = 4;

struct Session {
  Session(Bytes streamBytes, const FrameFormat& frameFormat, MutableBytes frameBytes)
      : stream(streamBytes), format(frameFormat), frame(frameBytes) {
    UseErrors(*reinterpret_cast<j_common_ptr>(&library), errors);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { jpeg_destroy_decompress(&library); }

  JpegErrors errors;
  jpeg_decompress_struct library{};
  MemorySource source;
  jpeg_progress_mgr progress{};
  Bytes stream;
  const FrameFormat& format;
  MutableBytes frame;
  std::vector<std::uint8_t> narrow;  // kRows rows by byte, where samples in the frame are wider
};

void OnProgress(j_common_ptr library) {
  const auto* decompressor = reinterpret_cast<j_decompress_ptr>(library);
  if (decompressor->input_scan_number > kMostScans) {
    EndStep(library, "the code stream has more scans than any image needs");
  }
}

void ReadHeader(Session& session) {
  jpeg_decompress_struct& library = session.library;
  jpeg_create_decompress(&library);
  UseSource(library, session.source, session.stream);
  session.progress.progress_monitor = OnProgress;
  library.progress = &session.progress;
  jpeg_read_header(&library, TRUE);
}

void RequireSameImage(const jpeg_decompress_struct& library, const FrameFormat& format) {
  const auto components = static_cast<std::uint32_t>(library.num_components);
  if (library.image_width != format.columns || library.image_height != format.rows) {
    Fail("the code stream has %u x %u pixels, the data set %u x %u", library.image_width,
         library.image_height, format.columns, format.rows);
  }
  if (components != format.samples) {
    Fail("the code stream has %u components, the data set %u", components, format.samples);
  }
  if (components != 1 && components != 3) Fail("%u components are not decoded", components);
  if (format.bitsAllocated < kPrecision) {
    Fail("the code stream has samples of %u bits, the data set allocates %u", kPrecision,
         format.bitsAllocated);
  }
  if (library.arith_code != FALSE) Fail("the code stream is coded arithmetically");
}

/// A block takes a code of one bit for its mean and another for the rest; in progressive streams the latter come for many at once.
void RequireBlocks(const jpeg_decompress_struct& library, std::size_t bytes) {
  std::uint64_t blocks = 0;
  for (int at = 0; at < library.num_components; ++at) {
    const jpeg_component_info& component = library.comp_info[at];
    blocks += std::uint64_t{component.width_in_blocks} * component.height_in_blocks;
  }
  RequirePlausible(bytes, blocks, library.progressive_mode != FALSE ? 8 : 4);
}

void ChooseColours(jpeg_decompress_struct& library, const FrameFormat& format) {
  library.out_color_space = library.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
  if (library.num_components == 1) return;
  ColourMarks marks;
  marks.hasJfif = library.saw_JFIF_marker != FALSE;
  if (library.saw_Adobe_marker != FALSE) marks.adobeTransform = library.Adobe_transform;
  const bool guess = library.jpeg_color_space == JCS_YCbCr;
  library.jpeg_color_space = AreYcc(marks, format.photometric, guess) ? JCS_YCbCr : JCS_RGB;
}

/// Where the stream has more than one scan this takes them all in.
void Start(Session& session) {
  jpeg_decompress_struct& library = session.library;
  library.dct_method = JDCT_ISLOW;
  library.do_fancy_upsampling = TRUE;
  library.do_block_smoothing = FALSE;
  jpeg_start_decompress(&library);
}

/// The library gives gray for what no scan brought.
void RequireAllScans(const jpeg_decompress_struct& library) {
  for (int at = 0; at < library.num_components; ++at) {
    if (library.comp_info[at].quant_table == nullptr) {
      Fail("component %d is in no scan", at + 1);
    }
    if (library.coef_bits == nullptr) continue;
    const auto& bits = library.coef_bits[at];
    if (std::any_of(std::begin(bits), std::end(bits), [](int left) { return left != 0; })) {
      Fail("scans of component %d are missing", at + 1);
    }
  }
}

void ReadRows(Session& session) {
  jpeg_decompress_struct& library = session.library;
  const auto size = static_cast<std::size_t>(session.format.RowSize());
  std::array<JSAMPROW, kRows> rows{};
  while (library.output_scanline < library.output_height) {
    const std::size_t left = library.output_height - library.output_scanline;
    const std::size_t count = std::min(left, kRows);
    std::uint8_t* place = session.frame.data() + library.output_scanline * size;
    for (std::size_t at = 0; at < count; ++at) rows[at] = place + at * size;
    jpeg_read_scanlines(&library, rows.data(), static_cast<JDIMENSION>(count));
  }
}

void WidenRow(const std::uint8_t* from, std::uint8_t* to, std::size_t count, std::size_t width) {
  for (std::size_t at = 0; at < count; ++at) {
    to[at * width] = from[at];
    std::fill_n(to + at * width + 1, width - 1, std::uint8_t{0});
  }
}

void ReadNarrowRows(Session& session) {
  jpeg_decompress_struct& library = session.library;
  const auto size = static_cast<std::size_t>(session.format.RowSize());
  const std::size_t width = session.format.BytesPerSample();
  while (library.output_scanline < library.output_height) {
    std::uint8_t* place = session.frame.data() + library.output_scanline * size;
    JSAMPROW row = session.narrow.data();
    jpeg_read_scanlines(&library, &row, 1);
    WidenRow(row, place, session.narrow.size(), width);
  }
}

/// Damage shows here last: by what is left before the end of the image, or by no end.
void Finish(Session& session) { jpeg_finish_decompress(&session.library); }

}  // namespace

DecodedFrame DecodeDct8(Bytes stream, const FrameFormat& format, MutableBytes frame) {
  Session session(stream, format, frame);
  RunStep(session, ReadHeader);
  RequireSameImage(session.library, format);
  RequireBlocks(session.library, stream.size());
  ChooseColours(session.library, format);
  RunStep(session, Start);
  RequireAllScans(session.library);
  if (format.BytesPerSample() == 1) {
    RunStep(session, ReadRows);
  } else {
    session.narrow.resize(std::size_t{format.columns} * format.samples);
    RunStep(session, ReadNarrowRows);
  }
  RunStep(session, Finish);
  ExtendSigns(frame, format, kPrecision);
  return {.precision = kPrecision, .isRgb = format.samples == 3, .isLossy = true};
}

}  // namespace tessaret::codecs
