#include "corpus/object_walk.h"

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "support/bytes.h"
#include "support/sha256.h"

namespace tessaret::test {
namespace {

struct Tag {
  std::int32_t group = 0;
  std::int32_t element = 0;
};

/// An element as its members tell of it.
struct Seen {
  Tag tag;
  std::string type;
  std::int32_t length = 0;
  std::int32_t count = 0;
  Bytes bytes;
};

std::string TextOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

std::vector<std::string> Pieces(const std::string& text) {
  std::vector<std::string> pieces(1);
  for (const char c : text) {
    if (c == '\\') {
      pieces.emplace_back();
    } else {
      pieces.back() += c;
    }
  }
  return pieces;
}

std::string Unpadded(std::string text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
  return text;
}

bool IsOneOf(std::string_view type, std::string_view list) {
  return type.size() == 2 && list.find(type) != std::string_view::npos;
}

template <class T>
T NumberAt(const Bytes& bytes, std::size_t index) {
  T number{};
  std::memcpy(&number, bytes.data() + index * sizeof(T), sizeof(T));
  return number;
}
static_assert(std::endian::native == std::endian::little);

/// Equal, or both no number.
template <class T>
bool Same(T a, T b) {
  return a == b || (a != a && b != b);
}

/// Whether `value` is value `index` of what was seen; true too where the bytes do not say it clearly.
bool IsValue(const Variant& value, const Seen& seen, std::size_t index) {
  const Bytes& bytes = seen.bytes;
  if (bytes.empty()) return value.IsEmpty();
  if (IsOneOf(seen.type, "US AT")) return value.AsLong() == NumberAt<std::uint16_t>(bytes, index);
  if (seen.type == "SS") return value.AsShort() == NumberAt<std::int16_t>(bytes, index);
  if (seen.type == "UL") return value.AsDouble() == NumberAt<std::uint32_t>(bytes, index);
  if (seen.type == "SL") return value.AsLong() == NumberAt<std::int32_t>(bytes, index);
  if (seen.type == "FL") return Same(value.AsFloat(), NumberAt<float>(bytes, index));
  if (seen.type == "FD") return Same(value.AsDouble(), NumberAt<double>(bytes, index));
  if (IsOneOf(seen.type, "LT ST UT")) return value.ToString().Narrow() == Unpadded(TextOf(bytes));
  if (IsOneOf(seen.type, "AE AS CS LO PN SH UI"))
    return value.ToString().Narrow() == Unpadded(Pieces(TextOf(bytes)).at(index));
  if (IsOneOf(seen.type, "DS IS")) {
    const std::string piece = Pieces(TextOf(bytes)).at(index);
    const double number = std::strtod(piece.c_str(), nullptr);
    return seen.type == "DS" ? Same(value.AsDouble(), number)
                             : value.AsLong() == static_cast<std::int32_t>(number);
  }
  if (IsOneOf(seen.type, "DA DT")) return value.IsEmpty() || value.Is(VariantType::kDate);
  if (seen.type == "TM") return value.IsEmpty() || value.Is(VariantType::kString);
  return value.AsArray() != nullptr && value.AsArray()->Bytes().size() == bytes.size();
}

/// How many values there are; of an FD, which counts as one, as many as can be reached.
std::size_t Reachable(const Seen& seen) {
  if (seen.type == "FD") return seen.bytes.size() / 8;
  // What is cut off at the end of the last number is no value.
  return seen.count > 0 ? static_cast<std::size_t>(seen.count) : 1;
}

class Walker {
 public:
  Walked walked;

  void Walk(const Ref<IDCMObject>& object, const std::string& path) {
    Tag tag;
    VariantBool found;
    Need(object->GetFirstVR(&tag.group, &tag.element, &found), path, "GetFirstVR");
    while (found.IsTrue()) {
      Meet(object, tag, path);
      const Tag before = tag;
      Need(object->GetNextVR(&tag.group, &tag.element, &found), path, "GetNextVR");
      if (found.IsTrue() &&
          std::pair(before.group, before.element) >= std::pair(tag.group, tag.element)) {
        Complain(path, "the order of tags");
        return;
      }
    }
  }

 private:
  void Complain(const std::string& where, const char* what) {
    if (walked.complaint.empty()) walked.complaint = where + ": " + what;
  }

  void Need(Status status, const std::string& where, const char* member) {
    if (status != kOk) Complain(where, member);
  }

  void Meet(const Ref<IDCMObject>& object, const Tag& tag, const std::string& path) {
    char name[32];
    std::snprintf(name, sizeof name, "(%04x,%04x)", static_cast<unsigned>(tag.group),
                  static_cast<unsigned>(tag.element));
    const std::string where = path + name;
    const Seen seen = Look(object, tag, where);
    ++walked.elements;
    Compare(object, seen, where);
    std::int16_t items = 0;
    Need(object->get_SequencesCount(tag.group, tag.element, &items), where, "SequencesCount");
    Note(seen, where, items);
    for (std::int32_t at = 0; at < items; ++at) {
      Ref<IDCMObject> item;
      Need(object->get_Sequence(tag.group, tag.element, at, item.Receive()), where, "Sequence");
      if (item) Walk(item, where + "[" + std::to_string(at) + "].");
    }
    Ref<IDCMObject> none;
    Need(object->get_Sequence(tag.group, tag.element, items, none.Receive()), where, "Sequence");
    if (none) Complain(where, "an item behind the last one");
  }

  Seen Look(const Ref<IDCMObject>& object, const Tag& tag, const std::string& where) {
    Seen seen{tag, {}, 0, 0, {}};
    String description, type, letters;
    VariantBool found;
    Need(object->GetVRDescr(tag.group, tag.element, &description, &type, &seen.length, &seen.count,
                            &found),
         where, "GetVRDescr");
    if (!found.IsTrue()) Complain(where, "there and not there");
    seen.type = type.Narrow();
    Variant bytes;
    Need(object->GetVRData(tag.group, tag.element, &letters, &bytes), where, "GetVRData");
    if (letters.Narrow() != seen.type) Complain(where, "two types");
    if (bytes.AsArray() != nullptr) {
      const auto all = bytes.AsArray()->Bytes();
      seen.bytes.assign(all.begin(), all.end());
      if (static_cast<std::int32_t>(all.size()) != seen.length) Complain(where, "two lengths");
    }
    return seen;
  }

  void Compare(const Ref<IDCMObject>& object, const Seen& seen, const std::string& where) {
    std::int32_t count = -1;
    Need(object->get_VRMultiplicity(seen.tag.group, seen.tag.element, &count), where,
         "VRMultiplicity");
    const bool isBytes = IsOneOf(seen.type, "OB OW UN");
    if (isBytes ? seen.count != 0 : seen.count != count) Complain(where, "two multiplicities");
    CompareRawText(object, seen, where);
    // Each value is looked for from the start of the text: tens of thousands are not asked for one by one.
    constexpr std::size_t kMostTexts = 2000;
    const std::size_t reachable = Reachable(seen);
    const bool isText = IsOneOf(seen.type, "AE AS CS DA DS DT IS LO PN SH TM UI");
    for (std::size_t at = 0; at < (isText ? std::min(reachable, kMostTexts) : reachable); ++at) {
      Variant value;
      Need(object->get_VR(seen.tag.group, seen.tag.element, {}, static_cast<std::int32_t>(at),
                          &value),
           where, "VR");
      ++walked.values;
      const std::size_t width = WidthOf(seen.type);
      const bool isThere = width == 0 || seen.bytes.size() >= (at + 1) * width;
      if (isThere ? !IsValue(value, seen, at) : !value.IsEmpty()) Complain(where, "a value");
    }
  }

  static std::size_t WidthOf(const std::string& type) {
    if (IsOneOf(type, "US SS AT")) return 2;
    if (IsOneOf(type, "UL SL FL")) return 4;
    return type == "FD" ? 8 : 0;
  }

  void CompareRawText(const Ref<IDCMObject>& object, const Seen& seen, const std::string& where) {
    String type, text;
    const Status status = object->GetVRRawString(seen.tag.group, seen.tag.element, &type, &text);
    if (IsOneOf(seen.type, "AE AS CS DA DS DT IS LO LT PN SH ST TM UI UN UT")) {
      Need(status, where, "GetVRRawString");
      if (text.Narrow() != TextOf(seen.bytes)) Complain(where, "the raw text");
    } else if (status != kException) {
      Complain(where, "raw text of what is no text");
    }
  }

  void Note(const Seen& seen, const std::string& where, std::int16_t items) {
    if (where.starts_with("(0002,")) return;
    // Writing makes the length of a sequence undefined.
    walked.text += where + " " + seen.type + " " + (items > 0 ? "" : std::to_string(seen.length)) +
                   " " + std::to_string(seen.count) + " " +
                   Sha256(seen.bytes.data(), seen.bytes.size()) + "\n";
  }
};

}  // namespace

Walked WalkThrough(const Ref<IDCMObject>& object) {
  Walker walker;
  walker.Walk(object, "");
  return std::move(walker.walked);
}

}  // namespace tessaret::test
