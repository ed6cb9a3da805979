// What tests of the readers and writers have in common.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>

#include "base/text.h"
#include "core/data_set_coder.h"
#include "support/bytes.h"
#include "support/compare_objects.h"
#include "support/data_set_builder.h"
#include "support/odd_streams.h"

namespace tessaret {

/// For messages of GoogleTest.
inline void PrintTo(const ParseStop& stop, std::ostream* out) {
  *out << Format("why %d at %llu (%4.4X,%4.4X)", static_cast<int>(stop.why),
                 static_cast<unsigned long long>(stop.position), stop.group, stop.element);
}

inline bool operator==(const ParseStop& a, const ParseStop& b) {
  return a.why == b.why && a.position == b.position && a.group == b.group && a.element == b.element;
}

}  // namespace tessaret

namespace tessaret::test {

inline constexpr Encoding kImplicit = Encoding::kImplicitLittle;
inline constexpr Encoding kExplicit = Encoding::kExplicitLittle;
inline constexpr Encoding kBig = Encoding::kExplicitBig;

using Why = ParseStop::Why;

/// What came of a parse.
struct Parsed {
  bool result = false;
  std::unique_ptr<DICOMDataObject> object = std::make_unique<DICOMDataObject>();
  std::optional<std::string> error;
  ParseStop stop;
  std::vector<ParseOddity> oddities;
  std::uint32_t position = 0;
};

inline std::vector<ParseOddity> OdditiesOf(const DataSetCoder& coder) {
  return {coder.Oddities().begin(), coder.Oddities().end()};
}

inline std::optional<std::string> ErrorOf(const DataSetCoder& coder) {
  return coder.ErrorText() == nullptr ? std::nullopt
                                      : std::optional<std::string>(coder.ErrorText());
}

/// Reads a data set through the wrapper for its encoding.
inline Parsed ParseFrom(Buffer& buffer, Encoding encoding, const RTC* dictionary = nullptr,
                        std::uint32_t longestPixelValue = kUndefinedLength) {
  DataSetCoder coder(dictionary);
  coder.LongestPixelValue = longestPixelValue;
  Parsed parsed;
  switch (encoding) {
    case Encoding::kImplicitLittle:
      parsed.result = coder.ImplicitLittleIn(buffer, *parsed.object);
      break;
    case Encoding::kExplicitLittle:
      parsed.result = coder.ExplicitLittleIn(buffer, *parsed.object);
      break;
    case Encoding::kExplicitBig:
      parsed.result = coder.ExplicitBigIn(buffer, *parsed.object);
      break;
  }
  parsed.error = ErrorOf(coder);
  parsed.stop = coder.LastStop();
  parsed.oddities = OdditiesOf(coder);
  parsed.position = buffer.Position;
  return parsed;
}

inline Parsed Parse(Encoding encoding, Bytes bytes, const RTC* dictionary = nullptr) {
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  return ParseFrom(buffer, encoding, dictionary);
}

/// How a stream is read as that of a file.
struct FileParse {
  Encoding start = Encoding::kExplicitLittle;
  bool loadPixels = true;
  bool fileMode = true;
  const RTC* dictionary = nullptr;
  std::uint32_t longestPixelValue = kUndefinedLength;
};

inline Parsed ParseFileFrom(Buffer& buffer, const FileParse& how) {
  DataSetCoder coder(how.dictionary);
  coder.FileMode = how.fileMode;
  coder.LongestPixelValue = how.longestPixelValue;
  Parsed parsed;
  parsed.result = coder.File_ParseRawVRIntoDCM(
      buffer, *parsed.object, static_cast<std::int32_t>(how.start), how.loadPixels);
  parsed.error = ErrorOf(coder);
  parsed.stop = coder.LastStop();
  parsed.oddities = OdditiesOf(coder);
  parsed.position = buffer.Position;
  return parsed;
}

inline Parsed ParseFile(Bytes bytes, const FileParse& how = {}) {
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  return ParseFileFrom(buffer, how);
}

/// Writes `object`, which is popped empty, through the wrapper for its encoding.
inline Bytes Encode(Encoding encoding, DICOMObject& object, const RTC* dictionary = nullptr) {
  DataSetCoder coder(dictionary);
  CollectingBuffer buffer;
  bool written = false;
  switch (encoding) {
    case Encoding::kImplicitLittle:
      written = coder.ImplicitLittleOut(object, buffer);
      break;
    case Encoding::kExplicitLittle:
      written = coder.ExplicitLittleOut(object, buffer);
      break;
    case Encoding::kExplicitBig:
      written = coder.ExplicitBigOut(object, buffer);
      break;
  }
  if (!written) throw std::runtime_error("not written: " + ErrorOf(coder).value_or("no words"));
  return buffer.Written();
}

/// An element that must be there.
inline VR& At(const DICOMObject& object, std::uint16_t group, std::uint16_t element) {
  VR* vr = object.GetVR(group, element);
  if (vr == nullptr) throw std::runtime_error(Format("no element (%4.4X,%4.4X)", group, element));
  return *vr;
}

/// An item that must be there.
inline DICOMObject& ItemAt(const DICOMObject& object, std::uint16_t group, std::uint16_t element,
                           std::uint32_t number) {
  DICOMObject* item = At(object, group, element).GetItem(number);
  if (item == nullptr)
    throw std::runtime_error(Format("(%4.4X,%4.4X) has no item %u", group, element, number));
  return *item;
}

/// How many elements the object has, without those nested in it.
inline std::size_t CountOf(const DICOMObject& object) { return object.Elements.Size(); }

/// The tags of an object in their order: "(0008,0018) (0010,0010)".
inline std::string TagsOf(const DICOMObject& object) {
  std::string tags;
  for (const VR* vr = object.GetFirstVR(); vr != nullptr; vr = object.GetNextVR(vr)) {
    tags += (tags.empty() ? "" : " ") + Format("(%4.4X,%4.4X)", vr->Group, vr->Element);
  }
  return tags;
}

}  // namespace tessaret::test
