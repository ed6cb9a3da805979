#include "jpegls/jpegls_header.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"
#include "failure.h"

namespace tessaret::codecs {
namespace {

enum Marker : std::uint8_t {
  kStartOfImage = 0xD8,
  kEndOfImage = 0xD9,
  kStartOfScan = 0xDA,
  kRestartInterval = 0xDD,
  kFirstApplication = 0xE0,
  kColorTransform = 0xE8,  // one of the segments for applications
  kLastApplication = 0xEF,
  kStartOfFrame = 0xF7,
  kPresets = 0xF8,
  kComment = 0xFE,
};

/// Bytes below this may follow FF within a scan.
constexpr std::uint8_t kLeastMarker = 0x80;

constexpr std::int32_t kMostNear = 255;
constexpr std::int32_t kDefaultReset = 64;
/// Of what is legal for samples of 16 bits; sums of as many errors are within 31 bits.
constexpr std::int32_t kMostReset = 32767;

/// The value, or `least` where that is out of range.
std::int32_t InRange(std::int32_t value, std::int32_t least, std::int32_t most) {
  return value > most || value < least ? least : value;
}

/// ISO/IEC 14495-1, C.2.4.1.1
std::array<std::int32_t, 3> DefaultThresholds(std::int32_t maximum, std::int32_t nearness) {
  constexpr std::int32_t kBasic[] = {3, 7, 21};  // of samples of 8 bits without loss
  constexpr std::int32_t kAllowance[] = {3, 5, 7};
  std::array<std::int32_t, 3> thresholds{};
  std::int32_t least = nearness + 1;
  for (std::int32_t at = 0; at < 3; ++at) {
    const std::int32_t floor = at + 2;
    const std::int32_t allowance = kAllowance[at] * nearness;
    std::int32_t threshold;
    if (maximum >= 128) {
      const std::int32_t factor = (std::min(maximum, 4095) + 128) / 256;
      threshold = factor * (kBasic[at] - floor) + floor + allowance;
    } else {
      const std::int32_t factor = 256 / (maximum + 1);
      threshold = std::max(floor, kBasic[at] / factor + allowance);
    }
    least = InRange(threshold, least, maximum);
    thresholds[static_cast<std::size_t>(at)] = least;
  }
  return thresholds;
}

class Walk {
 public:
  explicit Walk(Bytes stream) : stream_(stream) {}

  JpegLsHeader Run();

 private:
  std::uint8_t NextMarker();
  Bytes NextSegment();
  void ReadFrame(Bytes segment);
  void ReadPresets(Bytes segment);
  void ReadScan(Bytes segment);
  [[nodiscard]] JpegLsParameters Parameters(std::int32_t nearness) const;
  Bytes ScanData();

  Bytes stream_;
  std::size_t at_ = 0;
  JpegLsHeader header_;
  std::array<std::uint8_t, JpegLsHeader::kMostComponents> ids_{};
  JpegLsParameters presets_;   // 0 stands for the default
  std::uint32_t scanned_ = 0;  // components whose scans have begun
};

std::uint8_t Walk::NextMarker() {
  if (at_ >= stream_.size()) Fail("the code stream ends early");
  if (stream_[at_] != 0xFF) {
    Fail("byte %zu of the code stream is %02X, not a marker", at_, unsigned{stream_[at_]});
  }
  // Any number of bytes FF may fill up the space before a marker.
  while (at_ < stream_.size() && stream_[at_] == 0xFF) ++at_;
  if (at_ >= stream_.size()) Fail("the code stream ends early");
  return stream_[at_++];
}

Bytes Walk::NextSegment() {
  if (stream_.size() - at_ < 2) Fail("the code stream ends early");
  const std::size_t size = LoadBig16(&stream_[at_]);
  if (size < 2) Fail("a marker segment of %zu bytes in the code stream", size);
  if (size > stream_.size() - at_) Fail("the code stream ends early");
  const Bytes segment = stream_.subspan(at_ + 2, size - 2);
  at_ += size;
  return segment;
}

void Walk::ReadFrame(Bytes segment) {
  constexpr std::size_t kFixed = 6;
  constexpr std::size_t kEach = 3;
  if (header_.components != 0) Fail("a second frame header in the code stream");
  if (segment.size() < kFixed) Fail("a frame header of %zu bytes", segment.size());
  header_.precision = segment[0];
  header_.rows = LoadBig16(&segment[1]);
  header_.columns = LoadBig16(&segment[3]);
  const std::uint32_t components = segment[5];
  if (header_.precision < 2 || header_.precision > 16) {
    Fail("the code stream has samples of %u bits", header_.precision);
  }
  if (components == 0 || components > JpegLsHeader::kMostComponents) {
    Fail("the code stream has %u components", components);
  }
  if (segment.size() != kFixed + kEach * components) {
    Fail("a frame header of %zu bytes for %u components", segment.size(), components);
  }
  for (std::uint32_t at = 0; at < components; ++at) {
    const std::uint8_t* component = &segment[kFixed + kEach * at];
    ids_[at] = component[0];
    // One sampling factor is as good as any other where all are the same, but only 1 is in use.
    if (component[1] != 0x11) Fail("the code stream has components of fewer samples");
    if (std::find(ids_.begin(), ids_.begin() + at, ids_[at]) != ids_.begin() + at) {
      Fail("the code stream has component %u twice", unsigned{ids_[at]});
    }
  }
  header_.components = components;
}

void Walk::ReadPresets(Bytes segment) {
  constexpr std::uint8_t kParameters = 1;
  if (segment.empty()) Fail("a preset segment of no bytes");
  if (segment[0] != kParameters) {
    Fail("presets of type %u are not supported", unsigned{segment[0]});
  }
  if (segment.size() != 11) Fail("a preset segment of %zu bytes", segment.size());
  presets_.maximum = LoadBig16(&segment[1]);
  for (std::size_t at = 0; at < presets_.thresholds.size(); ++at) {
    presets_.thresholds[at] = LoadBig16(&segment[3 + 2 * at]);
  }
  presets_.reset = LoadBig16(&segment[9]);
}

/// ISO/IEC 14495-1, table C.1
JpegLsParameters Walk::Parameters(std::int32_t nearness) const {
  const std::int32_t highest = (1 << header_.precision) - 1;
  JpegLsParameters parameters = presets_;
  if (parameters.maximum == 0) parameters.maximum = highest;
  if (parameters.maximum > highest) {
    Fail("the largest value is %d in samples of %u bits", parameters.maximum, header_.precision);
  }
  if (nearness > std::min(kMostNear, parameters.maximum / 2)) {
    Fail("NEAR is %d where the largest value is %d", nearness, parameters.maximum);
  }
  parameters.nearness = nearness;
  const std::array<std::int32_t, 3> defaults = DefaultThresholds(parameters.maximum, nearness);
  std::int32_t least = nearness + 1;
  for (std::size_t at = 0; at < defaults.size(); ++at) {
    std::int32_t& threshold = parameters.thresholds[at];
    if (threshold == 0) threshold = defaults[at];
    if (threshold < least || threshold > parameters.maximum) {
      Fail("a threshold of %d is not from %d to %d", threshold, least, parameters.maximum);
    }
    least = threshold;
  }
  if (parameters.reset == 0) parameters.reset = kDefaultReset;
  if (parameters.reset < 3 || parameters.reset > std::max(kMostNear, parameters.maximum) ||
      parameters.reset > kMostReset) {
    Fail("counters are halved at %d, which is out of range", parameters.reset);
  }
  return parameters;
}

void Walk::ReadScan(Bytes segment) {
  if (header_.components == 0) Fail("a scan before the frame header of the code stream");
  if (segment.empty()) Fail("a scan header of no bytes");
  const std::uint32_t count = segment[0];
  if (segment.size() != 4 + std::size_t{2} * count) {
    Fail("a scan header of %zu bytes for %u components", segment.size(), count);
  }
  if (count != 1 && count != header_.components) {
    Fail("a scan with %u of %u components is not supported", count, header_.components);
  }
  if (count > header_.components - scanned_) Fail("more scans than components");
  for (std::uint32_t at = 0; at < count; ++at) {
    if (segment[1 + 2 * at] != ids_[scanned_ + at]) {
      Fail("scans of the code stream are not in the order of its components");
    }
    if (segment[2 + 2 * at] != 0) Fail("mapping tables are not supported");
  }
  const std::uint8_t* last = &segment[1 + 2 * count];
  const std::uint32_t interleave = last[1];
  if (last[2] != 0) Fail("a point transform in the code stream is not supported");
  if (interleave > 2 || (count == 1) != (interleave == 0)) {
    Fail("a scan of %u components with interleave mode %u", count, interleave);
  }
  JpegLsScan& scan = header_.scans[header_.scanCount++];
  scan.components = count;
  scan.interleave = static_cast<JpegLsInterleave>(interleave);
  scan.parameters = Parameters(last[0]);
  scan.data = ScanData();
  scanned_ += count;
}

/// Goes on to the next marker.
Bytes Walk::ScanData() {
  const std::size_t begin = at_;
  while (at_ < stream_.size()) {
    const void* found = std::memchr(&stream_[at_], 0xFF, stream_.size() - at_);
    if (found == nullptr) break;
    at_ = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - stream_.data());
    if (stream_.size() - at_ < 2) break;
    if (stream_[at_ + 1] >= kLeastMarker) return stream_.subspan(begin, at_ - begin);
    at_ += 2;
  }
  Fail("the code stream has no end marker");
}

/// One maker's extension, by which components are coded as differences.
void RequireNoTransform(Bytes segment) {
  constexpr std::size_t kSize = 5;
  if (segment.size() == kSize && std::memcmp(segment.data(), "mrfx", 4) == 0 && segment[4] != 0) {
    Fail("colour transform %u of the code stream is not supported", unsigned{segment[4]});
  }
}

void RequireNoRestarts(Bytes segment) {
  for (const std::uint8_t byte : segment) {
    if (byte != 0) Fail("restarts in the code stream are not supported");
  }
}

JpegLsHeader Walk::Run() {
  if (stream_.size() < 2 || LoadBig16(stream_.data()) != (0xFF00U | kStartOfImage)) {
    Fail("the code stream does not begin as JPEG does");
  }
  at_ = 2;
  for (;;) {
    const std::uint8_t marker = NextMarker();
    switch (marker) {
      case kEndOfImage:
        if (header_.components == 0 || scanned_ < header_.components) {
          Fail("the code stream ends with %u of %u components", scanned_, header_.components);
        }
        return header_;
      case kStartOfFrame:
        ReadFrame(NextSegment());
        break;
      case kPresets:
        ReadPresets(NextSegment());
        break;
      case kStartOfScan:
        ReadScan(NextSegment());
        break;
      case kRestartInterval:
        RequireNoRestarts(NextSegment());
        break;
      case kColorTransform:
        RequireNoTransform(NextSegment());
        break;
      default:
        if (marker != kComment && (marker < kFirstApplication || marker > kLastApplication)) {
          Fail("marker FF%02X in a JPEG-LS code stream", unsigned{marker});
        }
        NextSegment();
    }
  }
}

}  // namespace

JpegLsHeader ReadJpegLsHeader(Bytes stream) { return Walk(stream).Run(); }

}  // namespace tessaret::codecs
