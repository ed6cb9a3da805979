// Input that is made to cost: deep nesting, millions of small things, and large ones. Memory grows with the bytes that are there
// and by a known factor, time is linear, and the stack is flat.
#include <gtest/gtest.h>

#include "fault_helpers.h"
#include "support/build_kind.h"
#include "support/measured_child.h"
#include "support/small_stack.h"

namespace tessaret::test {
namespace {

constexpr std::uint64_t kMiB = 1 << 20;

/// What a rejected input may cost: 64 MiB and a small multiple of itself.
constexpr std::uint64_t kRejectedMultiple = 2;

/// The system counts the pages of a process in batches, one a processor and kind of page, and tells the sum without them.
constexpr std::uint64_t kUncounted = kMiB / 2;

/// Bounds of memory and time are those of what is shipped.
void ExpectCost(const Measured& measured, std::uint64_t mostBytes, double mostSeconds) {
  EXPECT_EQ(measured.result, 0);
  ::testing::Test::RecordProperty("peak_growth_kib", std::to_string(measured.peakGrowth >> 10));
  ::testing::Test::RecordProperty("seconds", std::to_string(measured.seconds));
  if (!kAsShipped) return;
  EXPECT_LE(measured.peakGrowth, mostBytes + kUncounted) << measured.peakGrowth / kMiB << " MiB";
  EXPECT_LE(measured.seconds, mostSeconds);
}

// F08, F09

/// `levels` sequences in one another, the innermost empty.
Bytes DeepNesting(Encoding encoding, std::uint32_t levels, Lengths lengths) {
  const std::size_t headSize = encoding == kImplicit ? 8 : 12;
  DataSetBuilder built(encoding);
  for (std::uint32_t level = 0; level < levels; ++level) {
    if (lengths == Lengths::kUndefined) {
      built.Head(0x0008, 0x1140, "SQ", kNoLength).Item();
      continue;
    }
    const auto inside = static_cast<std::uint32_t>((levels - level - 1) * (headSize + 8));
    built.Head(0x0008, 0x1140, "SQ", inside + 8).Item(inside);
  }
  return built;
}

class Depth : public ::testing::TestWithParam<std::tuple<std::uint32_t, Lengths>> {};

TEST_P(Depth, NestingBeyondTheLimitIsRefusedAtOnceOnAFlatStack) {
  const auto [levels, lengths] = GetParam();
  const auto dictionary = DictionaryOf("(0008,1140) VR=\"SQ\"\n");
  for (const Encoding encoding : {kImplicit, kExplicit}) {
    const Bytes bytes = FileOf(encoding, DeepNesting(encoding, levels, lengths));
    const Measured measured = RunMeasured([&] {
      bool asExpected = false;
      RunOnStack(kAsShipped ? kSmallStack : 16 * kSmallStack, [&] {
        const Loaded loaded = LoadBlock(bytes, {.dictionary = dictionary.get()});
        asExpected = loaded.object == nullptr &&
                     loaded.error == "Sequences are nested too deeply" &&
                     loaded.stop.why == Why::kTooDeep;
      });
      return asExpected ? 0 : 1;
    });
    ExpectCost(measured, 64 * kMiB, 1);
  }
}

INSTANTIATE_TEST_SUITE_P(
    BoundedCost, Depth,
    ::testing::Combine(::testing::Values(257u, 1'000u, 100'000u, Repetitions(10'000'000u)),
                       ::testing::Values(Lengths::kDefined, Lengths::kUndefined)),
    [](const auto& tested) {
      return std::to_string(std::get<0>(tested.param)) +
             (std::get<1>(tested.param) == Lengths::kDefined ? "Defined" : "Undefined");
    });

TEST(BoundedCost, NestingToTheLimitIsReadFromFilesStreamsAndBlocks) {
  for (const Lengths lengths : {Lengths::kDefined, Lengths::kUndefined}) {
    const Bytes bytes = DeepNesting(kExplicit, 256, lengths);
    const Why end = lengths == Lengths::kDefined ? Why::kNone : Why::kMissingEnd;
    PlainFileBuffer plain;
    EXPECT_EQ(LoadFileOf(bytes).stop.why, end);
    EXPECT_EQ(LoadFileOf(bytes, {.buffer = &plain}).stop.why, end);
    EXPECT_NE(LoadBlock(bytes).object, nullptr);
  }
}

// Millions of small things. A data set's own structure is what they cost: a record for each element, an object for each item.

int LoadsWith(const MemoryFile& file, std::size_t elements) {
  const Loaded loaded = LoadPath(file.Path());
  return loaded.object != nullptr && loaded.stop.why == Why::kNone &&
                 CountOf(*loaded.object) == elements
             ? 0
             : 1;
}

TEST(BoundedCost, TenMillionEmptyElementsCostTheirRecords) {
  constexpr std::uint32_t kCount = Repetitions(10'000'000u, 50u);
  Bytes bytes;
  bytes.reserve(std::size_t{8} * kCount);
  for (std::uint32_t number = 0; number < kCount; ++number) {
    const std::uint32_t tag = 0x00090000 + number;
    const Bytes element = {static_cast<std::uint8_t>(tag >> 16),
                           static_cast<std::uint8_t>(tag >> 24),
                           static_cast<std::uint8_t>(tag),
                           static_cast<std::uint8_t>(tag >> 8),
                           'L',
                           'O',
                           0,
                           0};
    bytes.insert(bytes.end(), element.begin(), element.end());
  }
  const MemoryFile file(bytes);
  const Measured measured = RunMeasured([&] { return LoadsWith(file, kCount); });
  // 80 MB of file; a record and its place in the map for each 8 bytes.
  ExpectCost(measured, 16 * bytes.size(), 10);
}

TEST(BoundedCost, AMillionElementsInDescendingOrderAreReadInTime) {
  constexpr std::uint32_t kCount = kAsShipped ? 1'000'000 : 200'000;
  DataSetBuilder built(kExplicit);
  for (std::uint32_t number = kCount; number > 0; --number) {
    built.Head(static_cast<std::uint16_t>(0x0009 + 2 * (number >> 16)),
               static_cast<std::uint16_t>(number), "LO", 0);
  }
  const MemoryFile file(built);
  const Measured measured = RunMeasured([&] { return LoadsWith(file, kCount); });
  ExpectCost(measured, 24 * built.Size(), 5);
}

TEST(BoundedCost, AMillionFragmentsCostTheirObjects) {
  constexpr std::uint32_t kCount = kAsShipped ? 1'000'000 : 100'000;
  DataSetBuilder built(kExplicit);
  built.Head(0x7FE0, 0x0010, "OB", kNoLength);
  for (std::uint32_t number = 0; number < kCount; ++number) built.Item(0);
  // No delimiter.
  const MemoryFile file(built);
  const Measured measured = RunMeasured([&] {
    const Loaded loaded = LoadPath(file.Path());
    return loaded.object && At(*loaded.object, 0x7FE0, 0x0010).ItemCount() == kCount ? 0 : 1;
  });
  ExpectCost(measured, 48 * built.Size(), 5);
}

TEST(BoundedCost, AMillionItemsCostTheirObjects) {
  constexpr std::uint32_t kCount = kAsShipped ? 1'000'000 : 100'000;
  DataSetBuilder built(kExplicit);
  built.Head(0x0008, 0x1140, "SQ", kNoLength);
  for (std::uint32_t number = 0; number < kCount; ++number) built.Item(0);
  const MemoryFile file(built);
  const Measured measured = RunMeasured([&] {
    const Loaded loaded = LoadPath(file.Path());
    return loaded.object && At(*loaded.object, 0x0008, 0x1140).ItemCount() == kCount ? 0 : 1;
  });
  ExpectCost(measured, 32 * built.Size(), 5);
}

TEST(BoundedCost, AMillionStrayDelimitersAreStepsOfOneLoad) {
  constexpr std::uint32_t kCount = 1'000'000;
  DataSetBuilder built(kExplicit);
  built.Element(0x0010, 0x0010, "PN", "Doe^John");
  for (std::uint32_t number = 0; number < kCount; ++number) built.EndItem();
  built.Element(0x0010, 0x0020, "LO", "4711");
  const MemoryFile file(built);
  const Measured measured = RunMeasured([&] { return LoadsWith(file, 2); });
  ExpectCost(measured, 8 * kMiB, 5);
}

TEST(BoundedCost, MegabytesOfZeroBehindTheDataSetHarmNothing) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes bytes = Joined({FileOf(encoding, PatientAnd(encoding, {})), Bytes(2'500'000, 0)});
    const MemoryFile file(bytes);
    const Measured measured = RunMeasured([&] {
      const Loaded loaded = LoadPath(file.Path());
      return loaded.object && HasPatient(*loaded.object) && loaded.object->GetVR(0x0002, 0x0010)
                 ? 0
                 : 1;
    });
    ExpectCost(measured, 8 * kMiB, 1);
  }
}

// F16

TEST(BoundedCost, ManyBackslashesAreJustBytes) {
  const Bytes few(64 * 1024 - 2, '\\');
  Bytes many;
  for (int number = 0; number < Repetitions(16'000'000); ++number)
    many.insert(many.end(), {'0', '\\'});
  const Bytes bytes = FileOf(kImplicit, DataSetBuilder(kImplicit)
                                            .Element(0x0011, 0x1001, "LO", few)
                                            .Element(0x0011, 0x1002, "DS", many));
  const MemoryFile file(bytes);
  const Measured measured = RunMeasured([&] {
    const Loaded loaded = LoadPath(file.Path());
    const bool whole = loaded.object && At(*loaded.object, 0x0011, 0x1001).Length == few.size() &&
                       At(*loaded.object, 0x0011, 0x1002).Length == many.size();
    return whole ? 0 : 1;
  });
  ExpectCost(measured, bytes.size() + 8 * kMiB, 1);
}

// F22

TEST(BoundedCost, AnUnknownValueOfAGibibyteCostsItself) {
  constexpr std::uint32_t kSize = kAsShipped ? 1u << 30 : 1u << 28;
  // The value is a hole, which takes no room until it is read.
  const Bytes start =
      FileOf(kExplicit,
             PatientAnd(kExplicit, DataSetBuilder(kExplicit).Head(0x0011, 0x1001, "UN", kSize)));
  MemoryFile file(start);
  file.Resize(start.size() + kSize);
  const Measured measured = RunMeasured([&] {
    const Loaded loaded = LoadPath(file.Path());
    const bool whole = loaded.object && loaded.stop.why == Why::kNone &&
                       HasPatient(*loaded.object) &&
                       At(*loaded.object, 0x0011, 0x1001).Length == kSize;
    return whole ? 0 : 1;
  });
  ExpectCost(measured, kSize + 8 * kMiB, 5);
}

TEST(BoundedCost, AHeaderBeforeAGibibyteOfPixelsCostsNothing) {
  constexpr std::uint32_t kSize = 1u << 30;
  const Bytes start =
      FileOf(kExplicit,
             PatientAnd(kExplicit, DataSetBuilder(kExplicit).Head(0x7FE0, 0x0010, "OW", kSize)));
  MemoryFile file(start);
  file.Resize(start.size() + kSize);
  const Measured measured = RunMeasured([&] {
    const Loaded loaded = LoadPath(file.Path(), {.loadPixels = false});
    return loaded.object && HasPatient(*loaded.object) ? 0 : 1;
  });
  ExpectCost(measured, 2 * kMiB, 0.1);
}

TEST(BoundedCost, ALargeFileIsSavedInMegabytes) {
  constexpr std::uint32_t kSize = 1u << 28;
  const std::unique_ptr<std::uint8_t[]> pixels(new std::uint8_t[kSize]());
  DICOMObject object;
  auto* vr = new VR(0x7FE0, 0x0010, kSize, pixels.get(), false);
  vr->TypeCode = type_code::OW;
  object.Push(vr);
  const Measured measured =
      RunMeasured([&] { return DataSetCoder().SaveKeeping("/dev/null", 3, object) ? 0 : 1; });
  ExpectCost(measured, 8 * kMiB, 1);
}

TEST(BoundedCost, ManyShortValuesAreSavedInMegabytes) {
  // 400,000 of 8 + 40 bytes, 19 MB.
  DICOMObject object;
  for (std::uint32_t at = 0; at < 400'000; ++at) {
    const TagKey key = MakeTagKey(0x0011, 0x1000) + at;
    object.Push(NewElement(GroupOf(key), ElementOf(key), type_code::LO, Pattern(40)));
  }
  const Measured measured =
      RunMeasured([&] { return DataSetCoder().SaveKeeping("/dev/null", 3, object) ? 0 : 1; });
  ExpectCost(measured, 8 * kMiB, 1);
}

// What is refused costs little, whatever it claims.

TEST(BoundedCost, AClaimOfFourGigabytesCostsWhatIsThere) {
  for (const std::string_view type : {"OB", "UN", "UT"}) {
    const Bytes bytes =
        FileOf(kExplicit,
               DataSetBuilder(kExplicit).Head(0x0011, 0x1001, type, 0xFFFFFFF0).Raw(Pattern(100)));
    const MemoryFile file(bytes);
    for (const bool plain : {false, true}) {
      const Measured measured = RunMeasured([&] {
        PlainFileBuffer stream;
        const Loaded loaded = LoadPath(file.Path(), {.buffer = plain ? &stream : nullptr});
        return loaded.object && loaded.stop.why == Why::kTruncated ? 0 : 1;
      });
      ExpectCost(measured, kRejectedMultiple * bytes.size() + kMiB, 0.1);
    }
  }
}

TEST(BoundedCost, ABlockThatFailsLateCostsASmallMultipleOfItself) {
  // 64 MiB of pixel data, and then a cut element.
  const Bytes bytes = FileOf(kExplicit, DataSetBuilder(kExplicit)
                                            .Element(0x7FE0, 0x0010, "OW", Bytes(64 * kMiB, 1))
                                            .Head(0xFFFC, 0xFFFC, "OB", 10));
  const Measured measured = RunMeasured([&] { return LoadBlock(bytes).object == nullptr ? 0 : 1; });
  ExpectCost(measured, kRejectedMultiple * bytes.size(), 1);
}

}  // namespace
}  // namespace tessaret::test
