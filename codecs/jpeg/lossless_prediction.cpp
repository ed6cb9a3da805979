#include "jpeg/lossless_prediction.h"

namespace tessaret::codecs {
namespace {

using Int = std::int32_t;

/// For all but the first pixel. `predict` gets the samples to the left, above and above to the left.
template <std::size_t kSamples, class Predict>
void UndoRest(const std::uint16_t* above, std::uint16_t* row, std::size_t size, Predict predict) {
  for (std::size_t sample = 0; sample < kSamples; ++sample) {
    Int left = row[sample];
    for (std::size_t at = sample + kSamples; at < size; at += kSamples) {
      left = static_cast<std::uint16_t>(predict(left, above[at], above[at - kSamples]) + row[at]);
      row[at] = static_cast<std::uint16_t>(left);
    }
  }
}

/// The same where what is above and above to the left makes what is to be added to the sample to the left. That one need not be brought
/// below 65536 each time, so that the next one can be had sooner.
template <std::size_t kSamples, class Predict>
void UndoSums(const std::uint16_t* above, std::uint16_t* row, std::size_t size, Predict predict) {
  for (std::size_t sample = 0; sample < kSamples; ++sample) {
    std::uint32_t left = row[sample];
    for (std::size_t at = sample + kSamples; at < size; at += kSamples) {
      left += static_cast<std::uint32_t>(predict(above[at], above[at - kSamples]) + row[at]);
      row[at] = static_cast<std::uint16_t>(left);
    }
  }
}

template <std::size_t kSamples>
void UndoBy(unsigned predictor, const std::uint16_t* above, std::uint16_t* row, std::size_t size) {
  switch (predictor) {
    case 1:
      return UndoSums<kSamples>(above, row, size, [](Int, Int) { return 0; });
    case 2:
      return UndoRest<kSamples>(above, row, size, [](Int, Int up, Int) { return up; });
    case 3:
      return UndoRest<kSamples>(above, row, size, [](Int, Int, Int corner) { return corner; });
    case 4:
      return UndoSums<kSamples>(above, row, size, [](Int up, Int corner) { return up - corner; });
    case 5:
      return UndoSums<kSamples>(above, row, size,
                                [](Int up, Int corner) { return (up - corner) >> 1; });
    case 6:
      return UndoRest<kSamples>(above, row, size, [](Int left, Int up, Int corner) {
        return up + ((left - corner) >> 1);
      });
    default:
      return UndoRest<kSamples>(above, row, size,
                                [](Int left, Int up, Int) { return (left + up) >> 1; });
  }
}

void Undo(unsigned predictor, const std::uint16_t* above, std::uint16_t* row, std::size_t size,
          std::size_t samples) {
  switch (samples) {
    case 1:
      return UndoBy<1>(predictor, above, row, size);
    case 2:
      return UndoBy<2>(predictor, above, row, size);
    case 3:
      return UndoBy<3>(predictor, above, row, size);
    default:
      return UndoBy<4>(predictor, above, row, size);
  }
}

}  // namespace

void UndoPrediction(unsigned predictor, const std::uint16_t* above, std::uint16_t* row,
                    std::size_t size, std::size_t samples) {
  for (std::size_t sample = 0; sample < samples; ++sample) {
    row[sample] = static_cast<std::uint16_t>(row[sample] + above[sample]);
  }
  Undo(predictor, above, row, size, samples);
}

void UndoFirstRow(std::uint16_t first, std::uint16_t* row, std::size_t size, std::size_t samples) {
  for (std::size_t sample = 0; sample < samples; ++sample) {
    row[sample] = static_cast<std::uint16_t>(row[sample] + first);
  }
  // Predictor 1 does not look at what is above.
  Undo(1, row, row, size, samples);
}

}  // namespace tessaret::codecs
