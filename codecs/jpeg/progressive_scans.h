// Progressive streams (ITU-T T.81, G): coefficients that come bit by bit and band by band, in many scans.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame_format.h"
#include "jpeg/dct_layout.h"
#include "jpeg/dct_scans.h"
#include "jpeg/quantisation_tables.h"
#include "jpeg/upsampling.h"

namespace tessaret::codecs {

class ProgressiveScans {
 public:
  explicit ProgressiveScans(const DctLayout& layout);

  /// Takes the scan at the begin of `rest`, and gives how many bytes it had. Throws CodecFailure where it is damaged and where it
  /// does not go on from those before.
  std::size_t Read(Bytes rest, const FrameHeader& frame, const ScanHeader& scan,
                   const DctTables& tables);

  /// Throws CodecFailure where bits of some coefficient did not come.
  void RequireAll() const;

  /// The samples of a component.
  [[nodiscard]] DctPlane Samples(std::size_t index) const;

 private:
  struct Component {
    std::vector<std::int16_t> coefficients;  // by block, each in the order of streams
    Quantisation quantisation{};
    std::array<std::int8_t, kBlockSize> missing{};  // low bits that did not come; -1: none came
  };

  void RequireNext(const ScanHeader& scan);

  const DctLayout& layout_;
  std::vector<Component> components_;
};

}  // namespace tessaret::codecs
