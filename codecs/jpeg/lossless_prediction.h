// The predictors of lossless JPEG (ITU-T T.81, H.1.2.1). All samples are modulo 65536; rows have the samples of a pixel one behind
// the other.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tessaret::codecs {

inline constexpr unsigned kMostPredictor = 7;

/// Makes differences samples, in place, by predictor 1 to 7 out of the row above. `size` is a multiple of `samples` and not 0.
void UndoPrediction(unsigned predictor, const std::uint16_t* above, std::uint16_t* row,
                    std::size_t size, std::size_t samples);

/// The same for the first row of an image and behind restart markers, whose pixels are predicted from `first` and then from
/// those to their left.
void UndoFirstRow(std::uint16_t first, std::uint16_t* row, std::size_t size, std::size_t samples);

}  // namespace tessaret::codecs
