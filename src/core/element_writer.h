// The writer of data elements, in both forms and both byte orders (DICOM PS3.5, 7.1). Sequences and items always go out with
// undefined lengths, so nothing has to be measured first. It empties what it writes, or keeps it: then the bytes written are
// the same, and no clone has to be made to be emptied.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/buffer_input.h"
#include "core/data_set_coder.h"

namespace tessaret {

/// The representation under which `form` has an element that is called `type`: where that is not known, what `dictionary` says, which
/// may be null.
VrCode TypeInStream(const VR& vr, VrCode type, ElementForm form, const RTC* dictionary);

/// Calls values UN that are too long for the length of their type in the explicit form, as an implicit file may have them (DICOM PS3.5,
/// 6.2.2). The writer would cut the length, and a reader take the rest of the value for elements.
void CallLongValuesUnknown(DICOMObject& object);

class ElementWriter {
 public:
  enum class After { kEmpty, kKeep };

  ElementWriter(DataSetCoder& coder, Buffer& buffer, After after = After::kEmpty);

  /// Writes a data set or an item. Group 0002 and group lengths are left out; the implicit form keeps (0000,0000), which a
  /// command set needs.
  bool WriteLevel(DICOMObject& object, ElementForm form, std::int32_t depth);

  /// Writes a file: all of group 0002, then the rest in the syntax that (0002,0010) names.
  bool WriteFile(DICOMObject& object, std::int32_t code);

  /// The same with group 0002 from `meta` instead of the object's own, and pixel data of `pixelType` unless that is 0.
  bool WriteFileWithMeta(DICOMObject& object, DICOMObject& meta, VrCode pixelType,
                         std::int32_t code);

  /// Writes the fragments in `items` and the delimiter.
  bool WriteFragments(ItemArray& items);

 private:
  /// Where WriteFile stands.
  struct FileState {
    std::int32_t code;
    std::optional<std::string> heldSyntax;  // of the meta header, until the first element behind it
  };

  bool WriteElements(DICOMObject& object, ElementForm form, std::int32_t depth);
  bool WriteFileElement(VR& vr, FileState& state);
  bool WriteBlankPaddedUid(VR& vr, VrCode type, ElementForm form, std::int32_t depth);
  bool SwitchSyntax(FileState& state);
  /// Writes one element, as `type`, and what is nested below it.
  bool WriteElement(VR& vr, VrCode type, ElementForm form, std::int32_t depth);
  /// What the element is called: its own type, or that which a file gives its pixel data.
  [[nodiscard]] VrCode GivenType(const VR& vr, std::int32_t depth) const;
  [[nodiscard]] VrCode TypeToWrite(const VR& vr, VrCode type, ElementForm form) const {
    return TypeInStream(vr, type, form, coder_.Dictionary);
  }
  void WriteHead(const VR& vr, VrCode type, ElementForm form);
  bool WriteValue(const VR& vr);
  bool WriteItems(VR& vr, ElementForm form, std::int32_t depth);
  bool WriteNested(DICOMObject& item, ElementForm form, std::int32_t depth);
  bool WriteFragment(DICOMObject& item);
  void WriteStructural(std::uint16_t element, std::uint32_t length);
  /// Whether the value can be stated and is there; false with words.
  bool CheckValue(const VR& vr);
  /// Sets the words "VR(group,element) `why`". Always false.
  bool Refuse(const VR& vr, const char* why);
  bool RefuseDepth();
  /// Apart, so that the levels of a nest do not hold what it needs.
  [[gnu::noinline]] void TraceElement(const VR& vr, ElementForm form, std::int32_t depth) const;

  DataSetCoder& coder_;
  Buffer& buffer_;
  After after_;
  bool tracing_;
  VrCode pixelType_ = type_code::kNone;  // for pixel data of a file, its icons excepted; 0: its own
};

}  // namespace tessaret
