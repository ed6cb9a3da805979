#include "codecs/plain_jpegls.h"

#include <algorithm>
#include <cstdlib>

namespace tessaret::codecs::test {
namespace {

class BitWriter {
 public:
  explicit BitWriter(std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}

  void Put(bool bit) {
    byte_ = byte_ << 1 | (bit ? 1 : 0);
    if (++bits_ == room_) Flush();
  }
  void Put(int value, int count) {
    for (int at = count - 1; at >= 0; --at) Put((value >> at & 1) != 0);
  }
  void Zeros(int count) {
    for (int at = 0; at < count; ++at) Put(false);
  }
  void End() {
    while (bits_ > 0 || room_ == 7) Put(false);
  }

 private:
  void Flush() {
    bytes_.push_back(static_cast<std::uint8_t>(byte_));
    room_ = byte_ == 0xFF ? 7 : 8;
    byte_ = 0;
    bits_ = 0;
  }

  std::vector<std::uint8_t>& bytes_;
  unsigned byte_ = 0;
  int bits_ = 0;
  int room_ = 8;
};

/// C.2.4.1.1: `low` where the value is not from there to `high`.
int Clamped(int value, int low, int high) { return value > high || value < low ? low : value; }

PlainLsPresets Resolved(PlainLsPresets given, int precision, int nearness) {
  PlainLsPresets full = given;
  if (full.maximum == 0) full.maximum = (1 << precision) - 1;
  const int most = full.maximum;
  int t1;
  int t2;
  int t3;
  if (most >= 128) {
    const int factor = (std::min(most, 4095) + 128) / 256;
    t1 = Clamped(factor * (3 - 2) + 2 + 3 * nearness, nearness + 1, most);
    t2 = Clamped(factor * (7 - 3) + 3 + 5 * nearness, t1, most);
    t3 = Clamped(factor * (21 - 4) + 4 + 7 * nearness, t2, most);
  } else {
    const int factor = 256 / (most + 1);
    t1 = Clamped(std::max(2, 3 / factor + 3 * nearness), nearness + 1, most);
    t2 = Clamped(std::max(3, 7 / factor + 5 * nearness), t1, most);
    t3 = Clamped(std::max(4, 21 / factor + 7 * nearness), t2, most);
  }
  if (full.t1 == 0) full.t1 = t1;
  if (full.t2 == 0) full.t2 = t2;
  if (full.t3 == 0) full.t3 = t3;
  if (full.reset == 0) full.reset = 64;
  return full;
}

constexpr int kJ[] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,  2,  3,  3,  3,  3,
                      4, 4, 5, 5, 6, 6, 7, 7, 8, 9, 10, 11, 12, 13, 14, 15};

int BitsFor(int count) {
  int bits = 0;
  while ((1LL << bits) < count) ++bits;
  return bits;
}

/// The names are those of annex A.
class ScanCoder {
 public:
  ScanCoder(PlainLsImage& image, const PlainLsScan& scan, std::vector<std::uint8_t>& bytes)
      : image_(image), scan_(scan), bits_(bytes), near_(scan.nearness) {
    const PlainLsPresets full = Resolved(scan.presets, image.precision, scan.nearness);
    maxval_ = full.maximum;
    t_ = {full.t1, full.t2, full.t3};
    reset_ = full.reset;
    range_ = (maxval_ + 2 * near_) / (2 * near_ + 1) + 1;
    qbpp_ = BitsFor(range_);
    const int bpp = std::max(2, BitsFor(maxval_ + 1));
    limit_ = 2 * (bpp + std::max(8, bpp));
    a_.fill(std::max(2, (range_ + 32) / 64));
    n_.fill(1);
  }

  void Run() {
    for (int y = 0; y < image_.rows; ++y) {
      if (scan_.interleave == 2) {
        Row(y, scan_.first, scan_.count, runIndex_[0]);
      } else {
        for (int at = 0; at < scan_.count; ++at) {
          Row(y, scan_.first + at, 1, runIndex_[static_cast<std::size_t>(at)]);
        }
      }
    }
    bits_.End();
  }

 private:
  int& At(int y, int x, int component) {
    const int pixel = y * image_.columns + x;
    const int place = pixel * image_.components + component;
    return image_.samples[static_cast<std::size_t>(place)];
  }
  /// A.2.1: what lies beyond the edges.
  int Around(int y, int x, int component) {
    if (y < 0) return 0;
    if (x < 0) return Around(y - 1, 0, component);
    return At(y, std::min(x, image_.columns - 1), component);
  }

  int Quantized(int d) const {
    if (d <= -t_[2]) return -4;
    if (d <= -t_[1]) return -3;
    if (d <= -t_[0]) return -2;
    if (d < -near_) return -1;
    if (d <= near_) return 0;
    if (d < t_[0]) return 1;
    if (d < t_[1]) return 2;
    if (d < t_[2]) return 3;
    return 4;
  }

  struct Place {
    int ra, rb, rc, rd;
    int q1, q2, q3;
    [[nodiscard]] bool IsFlat() const { return q1 == 0 && q2 == 0 && q3 == 0; }
  };
  Place PlaceOf(int y, int x, int component) {
    Place p{};
    p.ra = Around(y, x - 1, component);
    p.rb = Around(y - 1, x, component);
    p.rc = Around(y - 1, x - 1, component);
    p.rd = Around(y - 1, x + 1, component);
    p.q1 = Quantized(p.rd - p.rb);
    p.q2 = Quantized(p.rb - p.rc);
    p.q3 = Quantized(p.rc - p.ra);
    return p;
  }

  void Row(int y, int first, int count, int& runIndex) {
    int x = 0;
    while (x < image_.columns) {
      std::vector<Place> places;
      bool isRun = true;
      for (int c = first; c < first + count; ++c) {
        places.push_back(PlaceOf(y, x, c));
        isRun = isRun && places.back().IsFlat();
      }
      if (!isRun) {
        for (int at = 0; at < count; ++at) {
          Regular(places[static_cast<std::size_t>(at)], At(y, x, first + at));
        }
        ++x;
        continue;
      }
      int length = 0;
      const auto goesOn = [&](int column) {
        if (column >= image_.columns) return false;
        for (int at = 0; at < count; ++at) {
          const int ra = places[static_cast<std::size_t>(at)].ra;
          if (std::abs(At(y, column, first + at) - ra) > near_) return false;
        }
        return true;
      };
      while (goesOn(x + length)) {
        for (int at = 0; at < count; ++at) {
          At(y, x + length, first + at) = places[static_cast<std::size_t>(at)].ra;
        }
        ++length;
      }
      x += length;
      while (length >= 1 << kJ[runIndex]) {
        bits_.Put(true);
        length -= 1 << kJ[runIndex];
        if (runIndex < 31) ++runIndex;
      }
      if (x == image_.columns) {
        if (length > 0) bits_.Put(true);
        return;
      }
      bits_.Put(false);
      bits_.Put(length, kJ[runIndex]);
      for (int c = first; c < first + count; ++c) {
        Interruption(Around(y, x - 1, c), Around(y - 1, x, c), count > 1, runIndex, At(y, x, c));
      }
      if (runIndex > 0) --runIndex;
      ++x;
    }
  }

  int Quantize(int error) const {
    return error > 0 ? (error + near_) / (2 * near_ + 1) : -((near_ - error) / (2 * near_ + 1));
  }
  [[nodiscard]] int Reconstructed(int px, int sign, int error) const {
    return std::clamp(px + sign * error * (2 * near_ + 1), 0, maxval_);
  }
  [[nodiscard]] int Modulo(int error) const {
    if (error < 0) error += range_;
    if (error >= (range_ + 1) / 2) error -= range_;
    return error;
  }

  void Golomb(int value, int k, int limit) {
    const int high = value >> k;
    if (high < limit - qbpp_ - 1) {
      bits_.Zeros(high);
      bits_.Put(true);
      bits_.Put(value & ((1 << k) - 1), k);
    } else {
      bits_.Zeros(limit - qbpp_ - 1);
      bits_.Put(true);
      bits_.Put(value - 1, qbpp_);
    }
  }

  void Regular(const Place& p, int& sample) {
    int q1 = p.q1;
    int q2 = p.q2;
    int q3 = p.q3;
    int sign = 1;
    if (q1 < 0 || (q1 == 0 && q2 < 0) || (q1 == 0 && q2 == 0 && q3 < 0)) {
      q1 = -q1;
      q2 = -q2;
      q3 = -q3;
      sign = -1;
    }
    const int context = (q1 * 9 + q2 + 4) * 9 + q3 + 4;
    const auto q = static_cast<std::size_t>(context);
    int px;
    if (p.rc >= std::max(p.ra, p.rb)) {
      px = std::min(p.ra, p.rb);
    } else if (p.rc <= std::min(p.ra, p.rb)) {
      px = std::max(p.ra, p.rb);
    } else {
      px = p.ra + p.rb - p.rc;
    }
    px = std::clamp(px + sign * c_[q], 0, maxval_);
    int error = Quantize(sign * (sample - px));
    sample = Reconstructed(px, sign, error);
    error = Modulo(error);
    int k = 0;
    while ((n_[q] << k) < a_[q]) ++k;
    int mapped;
    if (near_ == 0 && k == 0 && 2 * b_[q] <= -n_[q]) {
      mapped = error >= 0 ? 2 * error + 1 : -2 * (error + 1);
    } else {
      mapped = error >= 0 ? 2 * error : -2 * error - 1;
    }
    Golomb(mapped, k, limit_);
    b_[q] += error * (2 * near_ + 1);
    a_[q] += std::abs(error);
    if (n_[q] == reset_) {
      a_[q] >>= 1;
      b_[q] = b_[q] >= 0 ? b_[q] >> 1 : -((1 - b_[q]) >> 1);
      n_[q] >>= 1;
    }
    ++n_[q];
    if (b_[q] <= -n_[q]) {
      b_[q] += n_[q];
      if (c_[q] > -128) --c_[q];
      if (b_[q] <= -n_[q]) b_[q] = -n_[q] + 1;
    } else if (b_[q] > 0) {
      b_[q] -= n_[q];
      if (c_[q] < 127) ++c_[q];
      if (b_[q] > 0) b_[q] = 0;
    }
  }

  void Interruption(int ra, int rb, bool isOfPixel, int runIndex, int& sample) {
    const int type = !isOfPixel && std::abs(ra - rb) <= near_ ? 1 : 0;
    const int px = type == 1 ? ra : rb;
    const int sign = type == 0 && ra > rb ? -1 : 1;
    int error = Quantize(sign * (sample - px));
    sample = Reconstructed(px, sign, error);
    error = Modulo(error);
    const auto q = static_cast<std::size_t>(kRunContexts + type);
    const int temp = type == 0 ? a_[q] : a_[q] + (n_[q] >> 1);
    int k = 0;
    while ((n_[q] << k) < temp) ++k;
    int map = 0;
    int& nn = nn_[static_cast<std::size_t>(type)];
    if (k == 0 && error > 0 && 2 * nn < n_[q]) {
      map = 1;
    } else if (error < 0 && 2 * nn >= n_[q]) {
      map = 1;
    } else if (error < 0 && k != 0) {
      map = 1;
    }
    const int mapped = 2 * std::abs(error) - type - map;
    Golomb(mapped, k, limit_ - kJ[runIndex] - 1);
    if (error < 0) ++nn;
    a_[q] += (mapped + 1 - type) >> 1;
    if (n_[q] == reset_) {
      a_[q] >>= 1;
      n_[q] >>= 1;
      nn >>= 1;
    }
    ++n_[q];
  }

  static constexpr int kRunContexts = 405;

  PlainLsImage& image_;
  const PlainLsScan& scan_;
  BitWriter bits_;
  int near_;
  int maxval_;
  std::array<int, 3> t_;
  int reset_;
  int range_;
  int qbpp_;
  int limit_;
  std::array<int, 407> a_;
  std::array<int, 407> b_{};
  std::array<int, 407> c_{};
  std::array<int, 407> n_;
  std::array<int, 2> nn_{};
  std::array<int, 4> runIndex_{};
};

void Put16(std::vector<std::uint8_t>& bytes, int value) {
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
  bytes.push_back(static_cast<std::uint8_t>(value));
}

}  // namespace

std::vector<std::uint8_t> EncodeLsPlainly(PlainLsImage& image,
                                          const std::vector<PlainLsScan>& scans) {
  std::vector<std::uint8_t> bytes = {0xFF, 0xD8, 0xFF, 0xF7};
  Put16(bytes, 8 + 3 * image.components);
  bytes.push_back(static_cast<std::uint8_t>(image.precision));
  Put16(bytes, image.rows);
  Put16(bytes, image.columns);
  bytes.push_back(static_cast<std::uint8_t>(image.components));
  for (int at = 0; at < image.components; ++at) {
    bytes.insert(bytes.end(), {static_cast<std::uint8_t>(at + 1), 0x11, 0});
  }
  for (const PlainLsScan& scan : scans) {
    if (scan.hasPresets) {
      Put16(bytes, 0xFFF8);
      Put16(bytes, 13);
      bytes.push_back(1);
      const PlainLsPresets& presets = scan.presets;
      for (const int value : {presets.maximum, presets.t1, presets.t2, presets.t3, presets.reset}) {
        Put16(bytes, value);
      }
    }
    Put16(bytes, 0xFFDA);
    Put16(bytes, 6 + 2 * scan.count);
    bytes.push_back(static_cast<std::uint8_t>(scan.count));
    for (int at = 0; at < scan.count; ++at) {
      bytes.insert(bytes.end(), {static_cast<std::uint8_t>(scan.first + at + 1), 0});
    }
    bytes.insert(bytes.end(), {static_cast<std::uint8_t>(scan.nearness),
                               static_cast<std::uint8_t>(scan.interleave), 0});
    ScanCoder(image, scan, bytes).Run();
  }
  bytes.insert(bytes.end(), {0xFF, 0xD9});
  return bytes;
}

}  // namespace tessaret::codecs::test
