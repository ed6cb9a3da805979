#include "jpeg/entropy_check.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "failure.h"
#include "jpeg/block_reader.h"
#include "jpeg/dct_scans.h"
#include "jpeg/progressive_scans.h"

namespace tessaret::codecs {
namespace {

/// Passes over the blocks of one component: over several coefficients at once where their codes are short.
class BlockPasser {
 public:
  BlockPasser(const HuffmanSpec& dc, const HuffmanSpec& ac) : dc_(dc), ac_(ac) {
    for (std::uint32_t bits = 0; bits < groups_.size(); ++bits) groups_[bits] = GroupOf(bits);
  }

  void Restart() { before_ = 0; }

  void Pass(BitReader& reader) {
    WithFastBits(reader, [&](auto& bits) {
      PassOne(bits);
      return true;
    });
  }

 private:
  static constexpr unsigned kBits = AcCodes::kShort;

  /// The codes that bits begin with, one behind the other.
  struct Group {
    std::uint8_t length = 0;
    std::uint8_t count = 0;  // of coefficients, zeros among them
    bool isEnd = false;      // of the block
  };

  [[nodiscard]] Group GroupOf(std::uint32_t bits) const {
    Group group;
    while (!group.isEnd && group.length < kBits) {
      const AcCodes::Code code = ac_.Short((bits << group.length) % (1u << kBits));
      if (code.length == 0 || group.length + code.length > kBits) break;
      group.length = static_cast<std::uint8_t>(group.length + code.length);
      group.isEnd = code.run == AcCodes::kEndRun;
      if (!group.isEnd) group.count = static_cast<std::uint8_t>(group.count + code.run + 1);
    }
    return group;
  }

  template <class Bits>
  void PassOne(Bits& bits) {
    bits.Fill();
    before_ += dc_.Read(bits);
    if (before_ != static_cast<std::int16_t>(before_)) Fail("a coefficient is out of its range");
    std::size_t at = 1;
    while (at < kBlockSize) {
      bits.Fill();
      const Group group = groups_[bits.Peek(kBits)];
      // Behind the last coefficient the next block begins, with other codes.
      if (group.length != 0 && at + group.count < kBlockSize) [[likely]] {
        bits.Drop(group.length);
        if (group.isEnd) return;
        at += group.count;
        continue;
      }
      const AcCodes::Code code = ac_.Read(bits);
      if (code.run == AcCodes::kEndRun) return;
      at += code.run + std::size_t{1};
      if (at > kBlockSize) Fail("a block has too many coefficients");
    }
  }

  DcCodes dc_;
  AcCodes ac_;
  std::array<Group, std::size_t{1} << kBits> groups_{};
  std::int32_t before_ = 0;  // first coefficient of the last block
};

BlockPasser BeginPart(const DctTables& tables, const ScanComponent& component,
                      const FrameHeader& header) {
  static_cast<void>(tables.quantisation.Require(header.components[component.index].quantisation));
  return {RequireTable(tables.huffman.dc, component.dcTable),
          RequireTable(tables.huffman.ac, component.acTable)};
}

void CheckSequential(Bytes stream, const DctSurvey& survey) {
  std::array<bool, kMostComponents> came{};
  ReadScans(stream, survey.header,
            [&](Bytes rest, const ScanHeader& scan, const DctTables& tables) {
              std::vector<BlockPasser> parts;
              for (std::size_t at = 0; at < scan.count; ++at) {
                const std::size_t index = scan.components[at].index;
                if (came[index]) Fail("component %zu comes in two scans", index + 1);
                came[index] = true;
                parts.push_back(BeginPart(tables, scan.components[at], survey.header));
              }
              return ReadBlocks(
                  rest, survey.layout, scan, tables.restartInterval,
                  [&] {
                    for (BlockPasser& part : parts) part.Restart();
                  },
                  [&](BitReader& bits, std::size_t at, std::uint32_t, std::uint32_t) {
                    parts[at].Pass(bits);
                  },
                  [] {});
            });
  for (std::size_t at = 0; at < survey.header.count; ++at) {
    if (!came[at]) Fail("component %zu is in no scan", at + 1);
  }
}

void CheckProgressive(Bytes stream, const DctSurvey& survey) {
  ProgressiveScans scans(survey.layout);
  ReadScans(stream, survey.header,
            [&](Bytes rest, const ScanHeader& scan, const DctTables& tables) {
              return scans.Read(rest, survey.header, scan, tables);
            });
  scans.RequireAll();
}

}  // namespace

void CheckEntropy(Bytes stream, const DctSurvey& survey) {
  if (survey.header.marker == Marker::kSof2) {
    CheckProgressive(stream, survey);
  } else {
    CheckSequential(stream, survey);
  }
}

}  // namespace tessaret::codecs
