#include "jpeg/dct_decoder.h"

#include "jpeg/dct12_decoder.h"
#include "jpeg/dct8_decoder.h"
#include "jpeg/dct_survey.h"
#include "jpeg/entropy_check.h"
#include "samples.h"

namespace tessaret::codecs {

DecodedFrame DecodeDct(Bytes stream, const FrameFormat& format, MutableBytes frame) {
  const DctSurvey survey = SurveyDct(stream, format);
  const std::uint32_t precision = survey.header.precision;
  if (precision == 8) {
    CheckEntropy(stream, survey);
    DecodeDct8(stream, survey, format, frame);
  } else {
    DecodeDct12(stream, survey, format, frame);
  }
  ExtendSigns(frame, format, precision);
  return {.precision = precision, .isRgb = survey.header.count == 3, .isLossy = true};
}

}  // namespace tessaret::codecs
