// Real files through the public interface, against what independent programs say about them.
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "core/module_dictionaries.h"
#include "corpus/known_differences.h"
#include "corpus/manifest.h"
#include "corpus/object_walk.h"
#include "corpus/saved_form.h"
#include "facade/dcm_object_helpers.h"
#include "support/compare_objects.h"
#include "support/sha256.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret::test {
namespace {

class CorpusObjects : public testing::Test {
 protected:
  void SetUp() override {
    if (Manifest().empty()) GTEST_SKIP() << "no manifest.tsv in " << kCorpusDir;
  }

  /// Loads with pixel data, compressed where it is that in the file.
  static Ref<IDCMObject> Load(const std::string& path) {
    auto object = NewObject();
    EXPECT_EQ(object.As<IDcmFile>()->LoadFile(path, LOAD_PIXELS, {}), kOk) << LastError().text;
    EXPECT_NE(CoreOf(object), nullptr);
    return object;
  }
};

TEST_F(CorpusObjects, AreWalkedWithoutAContradictionAndComeBackFromASave) {
  const TempFolder folder;
  const std::string saved = folder.File("saved.dcm");
  std::uint64_t elements = 0;
  std::uint64_t values = 0;
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    const auto object = Load(PathOf(row));
    const Walked first = WalkThrough(object);
    EXPECT_EQ(first.complaint, "");
    elements += first.elements;
    values += first.values;

    ASSERT_EQ(object->Save(saved), kOk) << LastError().text;
    EXPECT_EQ(WalkThrough(object).text, first.text);
    const auto again = Load(saved);
    const KnownSavedDifference* known = FindRow(kKnownSavedDifferences, row.path);
    TakeSavedForm(*CoreOf(object), ModuleDictionary());
    const Walked expected = WalkThrough(object);
    const Walked second = WalkThrough(again);
    EXPECT_EQ(second.complaint, "");
    EXPECT_EQ(second.text == expected.text, known == nullptr);
    RemoveMetaGroup(*CoreOf(again));
    EXPECT_EQ(
        Difference(*CoreOf(object), *CoreOf(again), {.positions = true, .sequenceLengths = true}),
        known != nullptr ? known->difference : "");
  }
  std::printf("elements: %llu, values: %llu\n", static_cast<unsigned long long>(elements),
              static_cast<unsigned long long>(values));
}

TEST_F(CorpusObjects, HaveTheElementsThatTheManifestCounts) {
  for (const ManifestRow& row : Manifest()) {
    SCOPED_TRACE(row.path);
    const auto object = Load(PathOf(row));
    std::uint64_t count = 0;
    std::int32_t group = 0;
    std::int32_t element = 0;
    VariantBool found;
    for (Status status = object->GetFirstVR(&group, &element, &found); found.IsTrue();
         status = object->GetNextVR(&group, &element, &found)) {
      ASSERT_EQ(status, kOk);
      ++count;
    }
    const KnownDifference* known = FindRow(kKnownDifferences, row.path);
    EXPECT_EQ(count, known != nullptr ? known->elements : row.elements.value_or(0));
  }
}

/// Exchanges the halves of each number of 32 bits.
void ExchangeWords(Bytes& bytes) {
  for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
    std::swap(bytes[at], bytes[at + 2]);
    std::swap(bytes[at + 1], bytes[at + 3]);
  }
}

/// Samples of a bit each, as the manifest has them: eight to a byte, the first the lowest. Codecs give each a byte.
Bytes Packed(const Bytes& bits) {
  Bytes packed((bits.size() + 7) / 8);
  for (std::size_t at = 0; at < bits.size(); ++at) {
    packed[at / 8] = static_cast<std::uint8_t>(packed[at / 8] | bits[at] << (at % 8));
  }
  return packed;
}

/// What the library cannot parse has no pixels; its parse ends behind the meta header.
bool IsUnknownSyntax(const ManifestRow& row) {
  const KnownDifference* known = FindRow(kKnownDifferences, row.path);
  return known != nullptr && known->stop == ParseStop::Why::kUnknownSyntax;
}

TEST_F(CorpusObjects, HaveTheNativePixelDataOfTheManifestHoweverTheirFileHoldsIt) {
  int compared = 0;
  int big = 0;
  int decoded = 0;
  for (const ManifestRow& row : Manifest()) {
    if (row.pixelSha256.empty() || IsUnknownSyntax(row)) continue;
    SCOPED_TRACE(row.path);
    const bool isCompressed = CountOf(Load(PathOf(row)), 0x7FE0, 0x0010) != 0;
    auto object = NewObject();
    const Status status = object->Load(PathOf(row), true);
    if (isCompressed) {
      EXPECT_EQ(status, kOk) << LastError().text;
      ++decoded;
    }
    if (!Describe(object, 0x7FE0, 0x0010).found.IsTrue()) continue;
    ++compared;
    const bool isBig = row.transferSyntax == "1.2.840.10008.1.2.2";
    if (isBig) ++big;
    Bytes image = Raw(object, 0x7FE0, 0x0010);
    // OW is turned in words of 16 bits; the program behind the digest takes samples of 32 bits for one number.
    if (isBig && row.bitsAllocated == 32) ExchangeWords(image);
    if (isCompressed && row.bitsAllocated == 1) image = Packed(image);
    image.resize(std::min<std::uint64_t>(image.size(), ImageBytes(row)));
    EXPECT_EQ(Sha256(image.data(), image.size()), row.pixelSha256);
  }
  std::printf("images compared: %d, of them big endian: %d, compressed: %d\n", compared, big,
              decoded);
  EXPECT_GT(compared, 0);
  EXPECT_GT(big, 0);
  EXPECT_GT(decoded, 0);
}

}  // namespace
}  // namespace tessaret::test
