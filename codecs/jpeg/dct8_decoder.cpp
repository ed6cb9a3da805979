#include "jpeg/dct8_decoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "jpeg/jpeg_library.h"
#include "jpeg/memory_source.h"

namespace tessaret::codecs {
namespace {

/// Rows that are asked for at once; the library makes up to four.
constexpr std::size_t kRows = 4;

struct Session {
  Session(Bytes streamBytes, const DctSurvey& streamSurvey, const FrameFormat& frameFormat,
          MutableBytes frameBytes)
      : stream(streamBytes), survey(streamSurvey), format(frameFormat), frame(frameBytes) {
    UseErrors(*reinterpret_cast<j_common_ptr>(&library), errors);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { jpeg_destroy_decompress(&library); }

  JpegErrors errors;
  jpeg_decompress_struct library{};
  jpeg_source_mgr source{};
  Bytes stream;
  const DctSurvey& survey;
  const FrameFormat& format;
  MutableBytes frame;
  std::vector<std::uint8_t> narrow;  // a row by byte, where samples in the frame are wider
};

void ReadHeader(Session& session) {
  jpeg_decompress_struct& library = session.library;
  jpeg_create_decompress(&library);
  UseSource(library, session.source, session.stream);
  jpeg_read_header(&library, TRUE);
}

/// Where the stream has more than one scan this takes them all in.
void Start(Session& session) {
  jpeg_decompress_struct& library = session.library;
  if (session.survey.header.count == 1) {
    library.out_color_space = JCS_GRAYSCALE;
  } else {
    library.jpeg_color_space = session.survey.isYcc ? JCS_YCbCr : JCS_RGB;
    library.out_color_space = JCS_RGB;
  }
  library.dct_method = JDCT_ISLOW;
  library.do_fancy_upsampling = TRUE;
  library.do_block_smoothing = FALSE;
  jpeg_start_decompress(&library);
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

void DecodeDct8(Bytes stream, const DctSurvey& survey, const FrameFormat& format,
                MutableBytes frame) {
  Session session(stream, survey, format, frame);
  RunStep(session, ReadHeader);
  RunStep(session, Start);
  if (format.BytesPerSample() == 1) {
    RunStep(session, ReadRows);
  } else {
    session.narrow.resize(std::size_t{format.columns} * format.samples);
    RunStep(session, ReadNarrowRows);
  }
  RunStep(session, Finish);
}

}  // namespace tessaret::codecs
