// What the tool shows and says of files whose pixel data it steps over is, to the byte, what it shows and says of them loaded
// whole.
#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "consistency.h"
#include "json_dump.h"
#include "line_dump.h"
#include "object_walk.h"
#include "source_file.h"
#include "standard_output.h"
#include "support/build_kind.h"
#include "support/data_set_builder.h"
#include "support/memory_file.h"
#include "support/test_paths.h"
#include "text_dump.h"

namespace tessaret::tool {
namespace {

using test::Bytes;
using test::DataSetBuilder;
using test::Encoding;

/// Of the real files every so many are taken: under sanitizers all would take most of a minute.
constexpr std::size_t kShare = test::kInstrumented ? 8 : 1;

/// All that `dump`, in each form that cuts pixel data, and `check` tell of a file.
void Tell(const std::string& path, bool skipPixels, Host& host) {
  const SourceFile source = LoadSource(path, {.skipPixels = skipPixels}, host);
  host.output.Line(path + ": " + source.failure + ", " + DescribeEncoding(source, host));
  for (const std::string& warning : source.warnings) host.output.Line(warning);
  if (!source.object) return;
  for (const std::string& oddity : FindOddities(source, host)) host.output.Line(oddity);
  DumpLines(source, {}, host);
  DumpText(source, host);
  JsonWriter json(host.output);
  DumpJson(source, json);
  json.EndLine();
}

std::string Told(const std::vector<std::string>& paths, bool skipPixels) {
  return StandardOutputOf([&](Output&) {
    Host host;
    for (const std::string& path : paths) Tell(path, skipPixels, host);
    host.output.Close();
  });
}

/// How many values were stepped over in a file.
std::size_t CountSkipped(const std::string& path, Host& host) {
  const SourceFile source = LoadSource(path, {.skipPixels = true}, host);
  std::size_t count = 0;
  for (std::size_t row = 0; row < source.listing.Rows(); ++row) {
    if (source.listing.IsItem(row)) continue;
    const Element element = source.listing.At(row);
    const bool isSkipped = !element.hasValue && element.length > 4096 && element.items == 0 &&
                           element.type != type_code::SQ;
    if (isSkipped) ++count;
  }
  return count;
}

void ExpectTheSame(const std::vector<std::string>& paths) {
  const std::string whole = Told(paths, false);
  const std::string skipped = Told(paths, true);
  ASSERT_NE(whole, "failed");
  ASSERT_FALSE(whole.empty());
  const auto [at, other] = std::ranges::mismatch(whole, skipped);
  if (at == whole.end() && other == skipped.end()) return;
  const auto offset = static_cast<std::size_t>(at - whole.begin());
  ADD_FAILURE() << "loaded whole: " << whole.substr(offset, 200)
                << "\nstepped over: " << skipped.substr(offset, 200);
}

TEST(SkippedPixels, ChangeNothingThatIsToldOfRealFiles) {
  std::vector<std::string> paths;
  std::error_code none;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(test::kCorpusDir, none)) {
    if (entry.is_regular_file()) paths.push_back(entry.path());
  }
  if (paths.empty()) GTEST_SKIP() << "no real files in " << test::kCorpusDir;
  std::ranges::sort(paths);
  std::vector<std::string> sample;
  for (std::size_t at = 0; at < paths.size(); at += kShare) sample.push_back(paths[at]);
  ExpectTheSame(sample);
  Host host;
  host.Dictionary();
  const auto hasSkipped = [&](const std::string& path) { return CountSkipped(path, host) > 0; };
  EXPECT_GT(std::ranges::count_if(sample, hasSkipped), 100 / static_cast<int>(kShare));
}

/// An image with pixel data of every kind in it: native in an item and, unless `fragments`, outside.
Bytes ImageOf(Encoding encoding, const Bytes& value, bool fragments) {
  DataSetBuilder icon(encoding);
  icon.Element(0x0028, 0x0010, "US", Bytes{1, 0}).Element(0x7FE0, 0x0010, "OB", value);
  DataSetBuilder image(encoding);
  image.Element(0x0010, 0x0010, "PN", "Doe^John");
  image.Sequence(0x0088, 0x0200, test::Lengths::kDefined, test::Lengths::kDefined, {icon.Done()});
  image.Element(0x7FE0, 0x0008, encoding == Encoding::kImplicitLittle ? "OF" : "OB", value);
  image.Element(0x7FE0, 0x0009, encoding == Encoding::kImplicitLittle ? "OD" : "UN", value);
  if (fragments) {
    image.Fragments({{}, value, value});
  } else {
    image.Element(0x7FE0, 0x0010, "OW", value);
  }
  return image.Element(0xFFFC, 0xFFFC, "OB", "end ");
}

TEST(SkippedPixels, ChangeNothingThatIsToldWhateverTheirValues) {
  Host host;
  host.Dictionary();
  test::MemoryFile file;
  for (const Encoding encoding : test::kAllEncodings) {
    for (const bool fragments : {false, true}) {
      // Numbers of a digit each, of which a line holds the most, and long ones.
      for (const Bytes& value : {Bytes(5000, 0), Bytes(5000, 'A'), test::Pattern(70000)}) {
        SCOPED_TRACE(std::string(NameOf(encoding)) + " of " + std::to_string(value.size()));
        file.Fill(test::FileOf(encoding, ImageOf(encoding, value, fragments)));
        EXPECT_EQ(CountSkipped(file.Path(), host), fragments ? 5u : 4u);
        ExpectTheSame({file.Path()});
      }
    }
  }
}

TEST(SkippedPixels, ChangeNothingThatIsToldOfFilesThatAreCutOrOdd) {
  const Bytes value = test::Pattern(70000);
  const Bytes whole =
      test::FileOf(Encoding::kExplicitLittle, ImageOf(Encoding::kExplicitLittle, value, true));
  test::MemoryFile file;
  for (std::size_t size = 400; size < whole.size(); size += 7919 * test::StepBy(3u)) {
    file.Fill(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    SCOPED_TRACE(size);
    ExpectTheSame({file.Path()});
  }
  // An item that hangs on native pixel data.
  DataSetBuilder odd(Encoding::kExplicitLittle);
  odd.Element(0x7FE0, 0x0010, "OW", value).Item(0).Element(0xFFFC, 0xFFFC, "OB", "end ");
  file.Fill(test::FileOf(Encoding::kExplicitLittle, odd));
  ExpectTheSame({file.Path()});
}

}  // namespace
}  // namespace tessaret::tool
