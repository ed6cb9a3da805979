#include "jpeg/dct_decoder.h"

#include "failure.h"
#include "jpeg/dct12_decoder.h"
#include "jpeg/dct8_decoder.h"
#include "jpeg/dct_survey.h"
#include "jpeg/entropy_check.h"
#include "samples.h"
#include "side_task.h"

namespace tessaret::codecs {
namespace {

/// Starting a thread takes as long as checking so many bytes.
constexpr std::size_t kShortStream = 16384;

/// The check takes a third as long as the decoding, which needs nothing of it: large streams are checked on another core meanwhile. Where
/// both fail the words are those of the check.
void CheckAndDecode(Bytes stream, const DctSurvey& survey, const FrameFormat& format,
                    MutableBytes frame) {
  if (stream.size() < kShortStream) {
    CheckEntropy(stream, survey);
    DecodeDct8(stream, survey, format, frame);
    return;
  }
  SideTask check([&] { CheckEntropy(stream, survey); });
  try {
    DecodeDct8(stream, survey, format, frame);
  } catch (const CodecFailure&) {
    check.Finish();
    throw;
  }
  check.Finish();
}

}  // namespace

DecodedFrame DecodeDct(Bytes stream, const FrameFormat& format, MutableBytes frame) {
  const DctSurvey survey = SurveyDct(stream, format);
  const std::uint32_t precision = survey.header.precision;
  if (precision == 8) {
    CheckAndDecode(stream, survey, format, frame);
  } else {
    DecodeDct12(stream, survey, format, frame);
  }
  ExtendSigns(frame, format, precision);
  return {.precision = precision, .isRgb = survey.header.count == 3, .isLossy = true};
}

}  // namespace tessaret::codecs
