#include "jpeg/lossless_scan.h"

#include <cstring>

#include "failure.h"
#include "jpeg/lossless_prediction.h"

namespace tessaret::codecs {
namespace {

/// Bits above those that count are all 0; where samples are signed they may repeat the sign too, for encoders differ in that.
void RequireRange(const std::vector<std::uint16_t>& row, std::uint32_t bits, bool isSigned) {
  unsigned seen = 0;
  for (const std::uint16_t sample : row) seen |= sample;
  if (seen >> bits == 0) return;
  const unsigned signs = 0xFFFFu >> (bits - 1) << (bits - 1);
  for (const std::uint16_t sample : row) {
    if (sample >> bits == 0 || (isSigned && (sample & signs) == signs)) continue;
    Fail("a sample of %u does not go into the %u bits of the code stream", sample, bits);
  }
}

template <class Sample>
void Store(std::uint16_t value, unsigned shift, std::uint8_t* to) {
  const auto sample = static_cast<Sample>(unsigned{value} << shift);
  std::memcpy(to, &sample, sizeof sample);
}

/// All samples of all pixels, in their order.
template <class Sample>
void StoreAll(const std::vector<std::uint16_t>& row, unsigned shift, std::uint8_t* to) {
  const std::uint16_t* const from = row.data();
  const std::size_t size = row.size();
  for (std::size_t at = 0; at < size; ++at) {
    Store<Sample>(from[at], shift, to + at * sizeof(Sample));
  }
}

}  // namespace

LosslessScan::LosslessScan(const ScanHeader& scan, const FrameHeader& header,
                           const HuffmanSpecs& known)
    : precision_(header.precision - scan.low),
      predictor_(scan.start),
      shift_(scan.low),
      samples_(scan.count) {
  if (predictor_ < 1 || predictor_ > kMostPredictor) Fail("there is no predictor %u", predictor_);
  if (shift_ >= header.precision) {
    Fail("samples of %u bits cannot be coded without %u", header.precision, shift_);
  }
  tables_.reserve(samples_);
  for (std::size_t at = 0; at < samples_; ++at) {
    const HuffmanSpec& listed = RequireTable(known.dc, scan.components[at].dcTable);
    places_[at] = scan.components[at].index;
    // Components with like tables, as they nearly always are, are read as one.
    std::size_t like = 0;
    while (like < at && !(RequireTable(known.dc, scan.components[like].dcTable) == listed)) ++like;
    if (like == at) tables_.emplace_back(listed, std::uint64_t{header.columns} * header.rows);
    tableFor_[at] = like == at ? tables_.size() - 1 : tableFor_[like];
  }
  row_.resize(header.columns * samples_);
  above_.resize(row_.size());
}

void LosslessScan::DecodeInterval(Bytes data, std::uint32_t firstRow, std::uint32_t rows,
                                  const FrameFormat& format, MutableBytes frame) {
  BitReader reader(data);
  for (std::uint32_t y = 0; y < rows; ++y) {
    ReadRow(reader);
    if (reader.IsOverrun()) Fail("the entropy-coded data end before the image does");
    if (y == 0) {
      UndoFirstRow(static_cast<std::uint16_t>(1u << (precision_ - 1)), row_.data(), row_.size(),
                   samples_);
    } else {
      UndoPrediction(predictor_, above_.data(), row_.data(), row_.size(), samples_);
    }
    RequireRange(row_, precision_, format.isSigned);
    PutRow(format, frame.data() + (firstRow + y) * format.RowSize());
    row_.swap(above_);
  }
  reader.RequireUsedUp();
}

void LosslessScan::ReadRow(BitReader& reader) {
  if (tables_.size() == 1) {
    tables_[0].Read(reader, row_.data(), row_.size());
    return;
  }
  for (std::size_t at = 0; at < row_.size(); at += samples_) {
    for (std::size_t sample = 0; sample < samples_; ++sample) {
      reader.Fill();
      row_[at + sample] = tables_[tableFor_[sample]].ReadOne(reader);
    }
  }
}

void LosslessScan::PutRow(const FrameFormat& format, std::uint8_t* to) const {
  const std::size_t width = format.BytesPerSample();
  if (samples_ == format.samples) {
    if (width == 1) return StoreAll<std::uint8_t>(row_, shift_, to);
    if (width == 2) return StoreAll<std::uint16_t>(row_, shift_, to);
    return StoreAll<std::uint32_t>(row_, shift_, to);
  }
  const std::uint16_t* from = row_.data();
  for (std::uint32_t x = 0; x < format.columns; ++x, to += format.samples * width) {
    for (std::size_t sample = 0; sample < samples_; ++sample) {
      std::uint8_t* const place = to + places_[sample] * width;
      const std::uint16_t value = *from++;
      if (width == 1) Store<std::uint8_t>(value, shift_, place);
      if (width == 2) Store<std::uint16_t>(value, shift_, place);
      if (width == 4) Store<std::uint32_t>(value, shift_, place);
    }
  }
}

}  // namespace tessaret::codecs
