// Objects as text for people, whatever they hold: one line for each thing that there is to say, each of limited length, and
// no control characters in them.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/dump.h"
#include "core/object_text.h"
#include "support.h"

namespace {

using namespace tessaret;
using tessaret::fuzz::Require;

// Tag, type, length and description, and the longest number (a double as digits) or text.
constexpr std::size_t kLongestLine = 600;

bool HasControls(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

void RequireLine(std::string_view line) {
  Require(line.size() <= kLongestLine, "a line of limited length");
  Require(!HasControls(line), "a line without control characters");
}

struct Tally {
  std::size_t lines = 0;
  std::size_t prefixes = 0;  // characters by which lines are set in
};

/// Looks at each element alone; counts what a listing of all has to hold.
void VisitElements(const DICOMObject& object, const DumpService& service, std::size_t depth,
                   Tally& tally) {
  object.Elements.ForEach([&](VR& vr) {
    RequireLine(ElementLine(vr, &service));
    RequireLine(ElementLine(vr, nullptr));
    RequireLine(VRValueToText(vr));
    const std::size_t lines = vr.ItemCount() == 0 ? 1 : 2 + 2 * std::size_t{vr.ItemCount()};
    tally.lines += lines;
    tally.prefixes += lines * (depth == 0 ? 0 : depth + 1);
    for (std::uint32_t at = 0; at < vr.ItemCount(); ++at) {
      VisitElements(*vr.GetItem(at), service, depth + 1, tally);
    }
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Input input(data, size);
  DataSetCoder coder(input.Option(2) ? nullptr : fuzz::StandardDictionary());
  coder.FileMode = input.Option(3);
  // Where the parse ends does not matter here, nor whether it came to the end.
  MemoryBuffer buffer(fuzz::BlockOf(input.bytes), static_cast<std::uint32_t>(input.bytes.size()),
                      false);
  DICOMDataObject object;
  coder.File_ParseRawVRIntoDCM(buffer, object, 100 + static_cast<std::int32_t>(input.options & 3),
                               !input.Option(4));

  const DumpService service{coder.Dictionary};
  Tally tally;
  VisitElements(object, service, 0, tally);
  const std::string text = ObjectToText(object, 0, coder.Dictionary);
  Require(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) == tally.lines,
          "one line for each thing");
  Require(text.size() <= tally.lines * kLongestLine + tally.prefixes, "a text of limited size");
  const std::string listing = HexListing(input.bytes.data(), input.bytes.size());
  Require(static_cast<std::size_t>(std::count(listing.begin(), listing.end(), '\n')) ==
              (input.bytes.size() + 31) / 32,
          "32 bytes a line");
  return 0;
}
