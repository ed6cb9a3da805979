#include "jpeg/lossless_encoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "jpeg/bit_writer.h"
#include "jpeg/difference_table.h"
#include "jpeg/jpeg_markers.h"
#include "jpeg/optimal_table.h"
#include "jpeg/segment_writer.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kLeastPrecision = 2;

using Frequencies = std::array<std::uint64_t, kMostCategory + 1>;

/// How many bits a difference has. The greatest is 32768, of which there is one only.
unsigned CategoryOf(std::int16_t difference) {
  return static_cast<unsigned>(std::bit_width(static_cast<unsigned>(std::abs(int{difference}))));
}

/// The differences of a frame, row by row.
class Predictor {
 public:
  Predictor(Bytes frame, const FrameFormat& format, std::uint32_t precision)
      : frame_(frame),
        format_(format),
        first_(static_cast<std::uint16_t>(1u << (precision - 1))),
        differences_(std::size_t{format.columns} * format.samples) {}

  /// Calls with each row's differences, modulo 65536.
  template <class Function>
  void ForEachRow(Function function) {
    for (std::uint32_t y = 0; y < format_.rows; ++y) {
      if (format_.bitsAllocated == 8) {
        Predict<std::uint8_t>(y);
      } else {
        Predict<std::uint16_t>(y);
      }
      function(differences_);
    }
  }

 private:
  template <class Sample>
  void Predict(std::uint32_t y) {
    const auto size = static_cast<std::size_t>(format_.RowSize());
    const std::uint8_t* const row = frame_.data() + y * size;
    const std::size_t samples = format_.samples;
    const auto at = [row](std::size_t index) {
      Sample sample;
      std::memcpy(&sample, row + index * sizeof sample, sizeof sample);
      return unsigned{sample};
    };
    for (std::size_t sample = 0; sample < samples; ++sample) {
      unsigned predicted = first_;
      if (y != 0) {
        Sample above;
        std::memcpy(&above, row - size + sample * sizeof above, sizeof above);
        predicted = above;
      }
      differences_[sample] = static_cast<std::int16_t>(at(sample) - predicted);
    }
    for (std::size_t index = samples; index < differences_.size(); ++index) {
      differences_[index] = static_cast<std::int16_t>(at(index) - at(index - samples));
    }
  }

  Bytes frame_;
  const FrameFormat& format_;
  std::uint16_t first_;
  std::vector<std::int16_t> differences_;
};

Frequencies CountCategories(Predictor& predictor) {
  // By turns, so that a count need not wait for the one before to be stored.
  std::array<Frequencies, 4> counts{};
  predictor.ForEachRow([&](const std::vector<std::int16_t>& differences) {
    for (std::size_t at = 0; at < differences.size(); ++at) {
      ++counts[at % counts.size()][CategoryOf(differences[at])];
    }
  });
  Frequencies sum{};
  for (const Frequencies& some : counts) {
    for (std::size_t category = 0; category < sum.size(); ++category) {
      sum[category] += some[category];
    }
  }
  return sum;
}

/// Bits that stand behind the code of a category.
unsigned BitsBehind(unsigned category) { return category == kMostCategory ? 0 : category; }

std::uint64_t CountBits(const Frequencies& frequencies, const std::array<HuffmanCode, 256>& codes) {
  std::uint64_t bits = 0;
  for (unsigned category = 0; category < frequencies.size(); ++category) {
    bits += frequencies[category] * (codes[category].length + BitsBehind(category));
  }
  return bits;
}

/// Says that red, green and blue are what they are: readers take three components for something else where nothing is said.
void AppendColour(std::vector<std::uint8_t>& stream) {
  AppendMarker(Marker::kApp14, stream);
  static constexpr std::uint8_t kAdobe[] = {0, 14, 'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0};
  stream.insert(stream.end(), std::begin(kAdobe), std::end(kAdobe));
}

void AppendFrameHeader(const FrameFormat& format, std::uint32_t precision,
                       std::vector<std::uint8_t>& stream) {
  AppendMarker(Marker::kSof3, stream);
  AppendNumber(8 + 3 * format.samples, stream);
  stream.push_back(static_cast<std::uint8_t>(precision));
  AppendNumber(format.rows, stream);
  AppendNumber(format.columns, stream);
  stream.push_back(static_cast<std::uint8_t>(format.samples));
  for (std::uint32_t sample = 0; sample < format.samples; ++sample) {
    constexpr std::uint8_t kNotSampled = 0x11;
    stream.insert(stream.end(), {static_cast<std::uint8_t>(sample + 1), kNotSampled, 0});
  }
}

void AppendScanHeader(const FrameFormat& format, std::vector<std::uint8_t>& stream) {
  AppendMarker(Marker::kSos, stream);
  AppendNumber(6 + 2 * format.samples, stream);
  stream.push_back(static_cast<std::uint8_t>(format.samples));
  for (std::uint32_t sample = 0; sample < format.samples; ++sample) {
    stream.insert(stream.end(), {static_cast<std::uint8_t>(sample + 1), 0});
  }
  constexpr std::uint8_t kPredictor = 1;
  stream.insert(stream.end(), {kPredictor, 0, 0});
}

void PutDifferences(const std::vector<std::int16_t>& differences,
                    const std::array<HuffmanCode, 256>& codes, BitWriter& writer) {
  BitWriter bits = writer;
  for (const std::int16_t difference : differences) {
    const unsigned category = CategoryOf(difference);
    const HuffmanCode code = codes[category];
    const unsigned behind = BitsBehind(category);
    // Negative ones are one less, so that their highest bit is 0.
    const unsigned low =
        static_cast<unsigned>(difference - (difference < 0 ? 1 : 0)) & ((1u << behind) - 1);
    bits.Put(std::uint64_t{code.bits} << behind | low, code.length + behind);
  }
  writer = bits;
}

}  // namespace

std::vector<std::uint8_t> EncodeLosslessJpeg(Bytes frame, const FrameFormat& format) {
  const std::uint32_t precision = std::max(BitsToKeep(frame, format), kLeastPrecision);
  Predictor predictor(frame, format, precision);
  const Frequencies frequencies = CountCategories(predictor);
  const HuffmanSpec table = OptimalTable(frequencies);
  const std::array<HuffmanCode, 256> codes = CodesOf(table);

  const std::uint64_t size = (CountBits(frequencies, codes) + 7) / 8;
  const auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size + BitWriter::kSlack);
  BitWriter writer(bytes.get());
  predictor.ForEachRow([&](const std::vector<std::int16_t>& differences) {
    PutDifferences(differences, codes, writer);
  });
  writer.Finish();

  std::vector<std::uint8_t> stream;
  AppendMarker(Marker::kSoi, stream);
  if (format.photometric == "RGB") AppendColour(stream);
  AppendFrameHeader(format, precision, stream);
  AppendTable(table, 0, 0, stream);
  AppendScanHeader(format, stream);
  AppendStuffed({bytes.get(), static_cast<std::size_t>(size)}, stream);
  AppendMarker(Marker::kEoi, stream);
  return stream;
}

}  // namespace tessaret::codecs
