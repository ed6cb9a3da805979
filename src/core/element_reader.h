// The one reader of data elements (DICOM PS3.5, 7.1), for both forms and both byte orders, over any input that offers the
// operations of BufferInput.
//
// A level is a data set, the inside of a sequence, or the inside of an item. The inside of a sequence is read into the
// object that holds the sequence: its items nest into the element that was pushed last.
#pragma once

#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "base/byte_order.h"
#include "core/buffer_input.h"
#include "core/dump.h"
#include "core/parse_trace.h"
#include "core/trace.h"
#include "platform/large_pages.h"

namespace tessaret {

/// Value representations with a 32-bit length in the explicit form. All others have a 16-bit length here, OF and the ones
/// that the standard added later included.
constexpr bool HasLongForm(VrCode type) {
  return type == type_code::OB || type == type_code::OW || type == type_code::UN ||
         type == type_code::UT || type == type_code::SQ;
}

/// Turns the numbers of a value round, by the width that its type stands for. 8-byte numbers get the 32-bit form.
void SwapValue(VrCode type, std::uint8_t* data, std::uint32_t length);

/// The UID in a (0002,0010) element: at most 63 bytes, up to a NUL, less one trailing blank.
std::string TransferSyntaxText(const VR& vr);

/// Whether `vr` is pixel data, or a fragment of it, of a type that pixel data has: only such values are stepped over.
bool MayBeSteppedOver(const VR& vr);

/// What the readers say of a structural tag.
void TraceStructuralTag(std::uint16_t element, std::uint32_t length, ElementForm form);

template <class Input>
class ElementReader {
 public:
  ElementReader(DataSetCoder& coder, Input& in)
      : coder_(coder),
        dictionary_(coder.Dictionary),
        types_(dictionary_ == nullptr ? nullptr : dictionary_->PlainTypes()),
        in_(in),
        longestPixelValue_(coder.LongestPixelValue),
        tracing_(IsDumping(kDumpParse)) {}

  /// Reads elements until the level ends.
  bool ReadLevel(DICOMObject& object, ElementForm form, std::int32_t depth) {
    if (depth > kMaxDepth) return RefuseDepth();
    while (in_.Available()) {
      const bool inSequence = IsInSequence(depth);
      if (!inSequence && !TakeUsualElements(object, form, depth)) return false;
      if (!in_.Available()) break;
      Head head;
      head.position = in_.Position();
      if (!in_.Read16(head.group) || !in_.Read16(head.element)) return Truncated(head);
      if (inSequence && head.group != kStructuralGroup) Note(Oddity::kElementInSequence, head);
      if (head.group == kStructuralGroup) {
        const Structure what = ReadStructural(object, head, form, depth);
        if (what != Structure::kItem) return what == Structure::kDelimiter;
        continue;
      }
      if (!ReadHead(head, form)) return Truncated(head);
      if (!ReadBody(object, head, form, depth)) return false;
    }
    coder_.NoteEnd(false);
    if (depth > 0) NoteMissingEnd();
    return true;
  }

  /// Reads a file: meta header, then the data set in the syntax that it names.
  bool ReadFile(DICOMObject& object, std::int32_t code, bool loadPixels) {
    readsFile_ = true;
    in_.SetBigEndian(IsBigEndian(code));
    // A parse that finds nothing says nothing of the ones before it.
    if (in_.Available()) coder_.NoteCode(code);
    Meta meta;
    meta.within = coder_.FileMode;
    while (in_.Available()) {
      const bool inDataSet = !meta.within && !meta.syntax;
      if (inDataSet && !TakeUsualElements(object, FormOf(code), 0)) return false;
      if (!in_.Available()) break;
      Head head;
      head.position = in_.Position();
      if (!in_.Read16(head.group)) return Truncated(head);
      if (!meta.within || head.group >= 3) {
        meta.within = false;
        if (meta.syntax) {
          if (!SwitchSyntax(*meta.syntax, code, head)) return false;
          meta.syntax.reset();
        }
      }
      if (!in_.Read16(head.element)) return Truncated(head);
      const ElementForm form = FormOf(code);
      if (head.group == kStructuralGroup) {
        const Structure what = ReadStructural(object, head, form, 0);
        if (what != Structure::kItem) return what == Structure::kDelimiter;
        continue;
      }
      if (!ReadFileHead(head, form)) return Truncated(head);
      if (head.Key() == kPixelDataTag && !meta.within && !loadPixels)
        return LeavePixels(object, head);
      if (meta.within) {
        if (!ReadMetaElement(object, head, form, meta)) return false;
      } else if (head.Key() == kTransferSyntaxTag) {
        // Behind the counted meta header the element says nothing about this stream and is not kept.
        Note(Oddity::kLateSyntax, head);
        DICOMObject passing;
        if (!ReadBody(passing, head, form, 0)) return false;
      } else if (!ReadBody(object, head, form, 0)) {
        return false;
      }
    }
    return true;
  }

  /// Reads fragments of encapsulated pixel data into items of the element that was pushed last.
  bool ReadFragments(DICOMObject& object) {
    while (in_.Available()) {
      Head head;
      head.position = in_.Position();
      if (!in_.Read16(head.group) || !in_.Read16(head.element) || !in_.Read32(head.length))
        return Truncated(head);
      if (!CheckTotal(head)) return false;
      if (head.group == kStructuralGroup && head.element == kSequenceDelimiterElement) return true;
      const bool fragment = head.group == kStructuralGroup && head.element == kItemElement;
      if (!fragment) Note(Oddity::kStrayFragment, head);
      auto vr = MakeElement(head);
      if (!ReadValue(*vr)) return Truncated(head);
      if (!fragment) continue;
      auto item = std::make_unique<DICOMDataObject>();
      item->Elements.Reserve(1);
      if (!PushElement(*item, vr, head) || !PushItem(object, item, head)) return false;
    }
    NoteMissingEnd();
    if (in_.LeftInView() == 0 && object.LastPushedVR != nullptr) {
      const VR& pixels = *object.LastPushedVR;
      coder_.Note({Oddity::kNoDelimiter, pixels.StreamPosition, pixels.Group, pixels.Element});
    }
    return true;
  }

 private:
  enum class Structure { kItem, kDelimiter, kFailure };
  using Oddity = ParseOddity::Kind;

  struct Head {
    std::uint32_t position = 0;
    std::uint16_t group = 0;
    std::uint16_t element = 0;
    VrCode type = type_code::kNone;
    std::uint32_t length = 0;
    [[nodiscard]] TagKey Key() const { return MakeTagKey(group, element); }
  };

  /// How far the meta header has come.
  struct Meta {
    bool within = false;
    std::int64_t remaining = 0;         // what its counted length leaves
    std::optional<std::string> syntax;  // named by it and not yet in use
  };

  [[gnu::cold]] bool StopAt(ParseStop::Why why, const Head& head) {
    return coder_.Stop({why, head.position, head.group, head.element});
  }
  [[gnu::cold]] bool Truncated(const Head& head) {
    return StopAt(ParseStop::Why::kTruncated, head);
  }

  [[gnu::cold]] void Note(Oddity kind, const Head& head) {
    coder_.Note({kind, head.position, head.group, head.element});
  }

  /// Levels of sequences and of their items take turns.
  static bool IsInSequence(std::int32_t depth) { return depth % 2 != 0; }

  /// What no delimiter ended may have been cut there. It reads all the same, as far as it came.
  void NoteMissingEnd() {
    if (in_.LeftInView() != 0) StopAt(ParseStop::Why::kMissingEnd, {.position = in_.Position()});
  }

  [[gnu::cold]] bool RefuseDepth() {
    coder_.SetError("Sequences are nested too deeply");
    return StopAt(ParseStop::Why::kTooDeep, {.position = in_.Position()});
  }

  VrCode LookUp(TagKey key) const {
    if (types_ != nullptr) return types_->TypeOf(key);
    if (dictionary_ == nullptr) return type_code::kNone;
    return dictionary_->RunTimeClass(GroupOf(key), ElementOf(key), nullptr);
  }

  /// The type of an implicit element. Without a dictionary there is none, not even "unknown".
  VrCode LookUpOrUnknown(TagKey key) const {
    if (dictionary_ == nullptr) return type_code::kNone;
    const VrCode type = LookUp(key);
    return type != type_code::kNone ? type : type_code::UN;
  }

  static ElementForm FormOf(std::int32_t code) {
    return IsImplicit(code) ? ElementForm::kImplicit : ElementForm::kExplicit;
  }

  /// Takes elements for as long as each is of the most usual kind: short, with a value that stays as it is, and all of it
  /// at hand. Whatever else comes is left for the long way, which reads these just the same. False when the object takes
  /// no more.
  bool TakeUsualElements(DICOMObject& object, ElementForm form, std::int32_t depth) {
    if (tracing_ || (TurnsValues(form, depth) && in_.SwapsValues())) return true;
    while (const std::uint8_t* const bytes = in_.Ahead(kLongHead + sizeof(VR::Small))) {
      const TagKey key = MakeTagKey(LoadLittle16(bytes), LoadLittle16(bytes + 2));
      if (key < kFirstUsualTag || key >= kPixelDataTag) return true;
      VrCode type = type_code::kNone;
      std::uint32_t headSize = kShortHead;
      std::uint32_t length = 0;
      if (form == ElementForm::kImplicit) {
        type = LookUpOrUnknown(key);
        length = LoadLittle32(bytes + 4);
      } else {
        type = LoadBig16(bytes + 4);
        if (type == type_code::kNone) return true;
        length = LoadLittle16(bytes + 6);
        if (HasLongForm(type)) {
          headSize = kLongHead;
          length = LoadLittle32(bytes + kShortHead);
        }
      }
      if (type == type_code::SQ || length > sizeof(VR::Small)) return true;
      if (headSize + length > in_.AtHand()) return true;
      const Head head{in_.Position(), GroupOf(key), ElementOf(key), type, length};
      in_.StepOver(headSize + length);
      auto vr = MakeElement(head);
      if (length != 0) vr->Data = vr->Small;
      std::memcpy(vr->Small, bytes + headSize, sizeof(vr->Small));
      if (!FileElement(object, vr, head)) return false;
    }
    return true;
  }

  /// Reads what stands between the tag and the value.
  bool ReadHead(Head& head, ElementForm form) {
    if (form == ElementForm::kImplicit) {
      head.type = LookUpOrUnknown(head.Key());
      return in_.Read32(head.length);
    }
    return ReadLetters(head) && ReadExplicitLength(head);
  }

  bool ReadLetters(Head& head) {
    std::uint8_t first = 0;
    std::uint8_t second = 0;
    if (!in_.Read8(first) || !in_.Read8(second)) return false;
    head.type = static_cast<VrCode>(first << 8 | second);
    return true;
  }

  bool ReadExplicitLength(Head& head) {
    if (head.type == type_code::kNone) {
      if (head.Key() != 0) Note(Oddity::kNoLetters, head);
      head.type = LookUp(head.Key());
    }
    if (head.type == type_code::kNone) head.type = type_code::UN;
    std::uint16_t half = 0;
    if (!in_.Read16(half)) return false;
    head.length = half;
    return !HasLongForm(head.type) || in_.Read32(head.length);
  }

  /// As ReadHead; besides, a sequence whose letters are two zero bytes has no length at all, only two bytes of filling.
  bool ReadFileHead(Head& head, ElementForm form) {
    if (form == ElementForm::kImplicit) return ReadHead(head, form);
    if (!ReadLetters(head)) return false;
    if (head.type != type_code::kNone || LookUp(head.Key()) != type_code::SQ)
      return ReadExplicitLength(head);
    Note(Oddity::kNoLetters, head);
    head.type = type_code::SQ;
    head.length = kUndefinedLength;
    std::uint16_t filling = 0;
    return in_.Read16(filling);
  }

  Structure ReadStructural(DICOMObject& object, Head& head, ElementForm form, std::int32_t depth) {
    if (!in_.Read32(head.length)) {
      Truncated(head);
      return Structure::kFailure;
    }
    if (tracing_) TraceStructuralTag(head.element, head.length, form);
    if (head.element == kSequenceDelimiterElement || head.element == kItemDelimiterElement) {
      NoteDelimiter(head, depth);
      return Structure::kDelimiter;
    }
    if (head.length != kUndefinedLength && head.element != kItemElement) {
      StopAt(ParseStop::Why::kStrayTag, head);
      return Structure::kFailure;
    }
    if (head.element != kItemElement) Note(Oddity::kWrongDelimiter, head);
    if (!IsInSequence(depth)) Note(Oddity::kItemOutside, head);
    auto item = std::make_unique<DICOMDataObject>();
    const bool read = ReadNested(*item, head, form, depth, head.length);
    return PushItem(object, item, head) && read ? Structure::kItem : Structure::kFailure;
  }

  void NoteDelimiter(const Head& head, std::int32_t depth) {
    coder_.NoteEnd(true);
    if (depth == 0) return Note(Oddity::kStrayDelimiter, head);
    const auto due = IsInSequence(depth) ? kSequenceDelimiterElement : kItemDelimiterElement;
    if (head.element != due || head.length != 0) Note(Oddity::kWrongDelimiter, head);
  }

  /// Reads what an element or an item at `depth` holds.
  bool ReadNested(DICOMObject& object, const Head& head, ElementForm form, std::int32_t depth,
                  std::uint32_t length) {
    const std::uint32_t begin = in_.Position();
    const bool read = in_.ReadNested(*this, object, form, depth + 1, length);
    if (read && length != kUndefinedLength && in_.Position() - begin != length)
      Note(Oddity::kWrongLength, head);
    if (read && length == kUndefinedLength && !coder_.EndedByDelimiter() && in_.LeftInView() == 0)
      Note(Oddity::kNoDelimiter, head);
    return read;
  }

  /// Without a dictionary implicit elements have no type.
  static bool MayHoldItems(VrCode type) {
    return type == type_code::SQ || type == type_code::UN || type == type_code::kNone;
  }

  /// What could be read of an item stays, also when reading it failed.
  bool PushItem(DICOMObject& object, std::unique_ptr<DICOMDataObject>& item, const Head& head) {
    if (object.Push(item.get())) {
      item.release();
      return true;
    }
    // With an element to land in there was no memory, and an object that lacks an item is not to pass for a whole one.
    if (object.LastPushedVR != nullptr) throw std::bad_alloc();
    return StopAt(ParseStop::Why::kOrphanItem, head);
  }

  bool ReadBody(DICOMObject& object, const Head& head, ElementForm form, std::int32_t depth) {
    auto vr = MakeElement(head);
    if (head.length == kUndefinedLength) {
      vr->Length = 0;
      if (!PushElement(object, vr, head)) return false;
      if (head.Key() == kPixelDataTag) return in_.ReadFragments(*this, object);
      if (!MayHoldItems(head.type)) Note(Oddity::kNotASequence, head);
      return ReadNested(object, head, form, depth, kUndefinedLength);
    }
    if (!CheckTotal(head)) return false;
    if (head.type == type_code::SQ) {
      return PushElement(object, vr, head) && ReadNested(object, head, form, depth, head.length);
    }
    return ReadTurnedValue(*vr, head, form, depth) && PushElement(object, vr, head);
  }

  bool ReadTurnedValue(VR& vr, const Head& head, ElementForm form, std::int32_t depth) {
    if (!ReadValue(vr)) return Truncated(head);
    if (!TurnsValues(form, depth) || !in_.SwapsValues()) return true;
    if (vr.IsSteppedOver) {
      SwapValue(vr.TypeCode, vr.Start, static_cast<std::uint32_t>(vr.FirstBytes().size()));
    } else {
      SwapValue(vr.TypeCode, vr.Data, vr.Length);
    }
    return true;
  }

  /// Values stay as they are in implicit data sets and items; at the outermost level of a file they are turned in any form.
  [[nodiscard]] bool TurnsValues(ElementForm form, std::int32_t depth) const {
    return form == ElementForm::kExplicit || (readsFile_ && depth == 0);
  }

  bool ReadMetaElement(DICOMObject& object, const Head& head, ElementForm form, Meta& meta) {
    if (head.length == kUndefinedLength || head.type == type_code::SQ)
      return ReadMetaSequence(object, head, form, meta);
    if (!CheckTotal(head)) return false;
    auto vr = MakeElement(head);
    if (!ReadTurnedValue(*vr, head, form, 0)) return false;
    NoteMetaElement(*vr, head, meta);
    if (!EndsWithSyntax(head, meta)) return PushElement(object, vr, head);
    if (tracing_) TraceElement(*vr);
    return true;
  }

  /// It is read aside at first: the object may hold an older one of the tag, or pass its elements on.
  bool ReadMetaSequence(DICOMObject& object, const Head& head, ElementForm form, Meta& meta) {
    DICOMObject aside;
    const bool read = ReadBody(aside, head, form, 0);
    const VR* vr = aside.GetVR(head.group, head.element);
    if (read && vr != nullptr) NoteMetaElement(*vr, head, meta);
    if (EndsWithSyntax(head, meta)) delete aside.Remove(head.group, head.element);
    return MoveElements(aside, object, head) && read;
  }

  /// The syntax that ends the meta header takes effect, but does not stay.
  static bool EndsWithSyntax(const Head& head, const Meta& meta) {
    return !meta.within && head.Key() == kTransferSyntaxTag;
  }

  static void NoteMetaElement(const VR& vr, const Head& head, Meta& meta) {
    if (head.element == 0x0010) meta.syntax = TransferSyntaxText(vr);
    if (head.Key() == kMetaGroupLengthTag) {
      const std::uint16_t stated = vr.Data != nullptr && vr.Length >= 2 ? LoadLittle16(vr.Data) : 0;
      meta.remaining = std::int64_t{stated} - 4;
    } else {
      meta.remaining -= std::int64_t{8} + vr.Length;
      if (meta.remaining < 1) meta.within = false;
    }
  }

  /// As if all had been read into `to` in the first place.
  bool MoveElements(DICOMObject& from, DICOMObject& to, const Head& head) {
    VR* const last = from.LastPushedVR;
    while (VR* first = from.GetFirstVR()) {
      if (!to.Push(first)) return StopAt(ParseStop::Why::kOrphanItem, head);
      from.Pop();
    }
    if (last != nullptr && to.PushTarget == nullptr) to.LastPushedVR = last;
    to.SequenceBytes += from.SequenceBytes;
    from.SequenceBytes = 0;
    return true;
  }

  bool SwitchSyntax(const std::string& uid, std::int32_t& code, Head& head) {
    const auto found = FindTransferSyntax(uid);
    if (!found) return StopAt(ParseStop::Why::kUnknownSyntax, head);
    if (*found != code && IsBigEndian(*found) != IsBigEndian(code)) {
      head.group = __builtin_bswap16(head.group);
      in_.SetBigEndian(IsBigEndian(*found));
    }
    code = *found;
    coder_.NoteCode(code);
    return true;
  }

  bool LeavePixels(DICOMObject& object, const Head& head) {
    auto vr = MakeElement(head);
    return PushElement(object, vr, head) && StopAt(ParseStop::Why::kPixelData, head);
  }

  std::unique_ptr<VR> MakeElement(const Head& head) const {
    auto vr = std::make_unique<VR>(head.group, head.element, head.length, nullptr);
    vr->TypeCode = head.type;
    vr->StreamPosition = head.position;
    return vr;
  }

  bool PushElement(DICOMObject& object, std::unique_ptr<VR>& vr, const Head& head) {
    if (tracing_) TraceElement(*vr);
    return FileElement(object, vr, head);
  }

  bool FileElement(DICOMObject& object, std::unique_ptr<VR>& vr, const Head& head) {
    const std::size_t before = object.Elements.Size();
    // An object whose PushTarget leads nowhere takes nothing.
    if (!object.Push(vr.get())) return StopAt(ParseStop::Why::kOrphanItem, head);
    vr.release();
    const bool isReplaced = object.Elements.Size() == before && object.PushTarget == nullptr;
    if (isReplaced && head.Key() != 0) Note(Oddity::kTwice, head);
    return true;
  }

  /// Reads `vr.Length` bytes into a new Data. Within a view a longer value yields what is left, and has that length.
  bool ReadValue(VR& vr) {
    if (vr.Length == 0) return true;
    if (!StepsOver(vr) && in_.ReadInPlace(vr)) return true;
    if (vr.Length > in_.LeftInView()) {
      coder_.Note({Oddity::kCutByView, vr.StreamPosition, vr.Group, vr.Element});
      vr.Length = in_.LeftInView();
    }
    if (vr.Length == 0) return true;
    const std::uint64_t supply = in_.SuppliesAtMost();
    if (vr.Length > supply) return false;
    if (StepsOver(vr)) return StepOver(vr);
    if (supply == std::numeric_limits<std::uint64_t>::max() && vr.Length > kTrustedLength)
      return ReadGrowing(vr);
    vr.AllocateValue();
    PreferLargePages(vr.Data, vr.Length);
    return in_.ReadBytes(vr.Data, vr.Length);
  }

  [[nodiscard]] bool StepsOver(const VR& vr) const {
    return vr.Length > longestPixelValue_ && MayBeSteppedOver(vr);
  }

  bool StepOver(VR& vr) {
    const std::uint32_t size = std::min(vr.Length, VR::kStartSize);
    std::unique_ptr<std::uint8_t[]> start(new std::uint8_t[VR::kStartSize]());
    if (!in_.ReadBytes(start.get(), size) || !in_.SkipBytes(vr.Length - size)) return false;
    vr.Start = start.release();
    vr.IsSteppedOver = true;
    return true;
  }

  /// For a stream that does not know what it can supply: memory is taken as bytes arrive.
  bool ReadGrowing(VR& vr) {
    std::uint32_t size = kTrustedLength;
    std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[size]);
    std::uint32_t have = 0;
    for (;;) {
      if (!in_.ReadBytes(bytes.get() + have, size - have)) return false;
      have = size;
      if (have == vr.Length) break;
      size = vr.Length - size < size ? vr.Length : size * 2;
      std::unique_ptr<std::uint8_t[]> larger(new std::uint8_t[size]);
      std::memcpy(larger.get(), bytes.get(), have);
      bytes = std::move(larger);
    }
    vr.Data = bytes.release();
    return true;
  }

  bool CheckTotal(const Head& head) {
    const auto total = static_cast<std::uint64_t>(in_.Total());
    if (total >= head.length) return true;
    const std::string words =
        Format("VR(%4.4X,%4.4X) Length[%d] > [%d] available bytes", head.group, head.element,
               static_cast<int>(head.length), static_cast<int>(total));
    coder_.SetError(words.c_str());
    return StopAt(ParseStop::Why::kTooLong, head);
  }

  void TraceElement(const VR& vr) const {
    const DumpService service{dictionary_};
    DumpVR(vr, &service);
  }

  static constexpr std::uint32_t kTrustedLength = 1u << 20;
  static constexpr std::uint32_t kShortHead = 8;
  static constexpr std::uint32_t kLongHead = 12;
  // Below lies what may belong to the meta header; from pixel data on, some tags have ways of their own.
  static constexpr TagKey kFirstUsualTag = MakeTagKey(0x0003, 0);

  DataSetCoder& coder_;
  const RTC* dictionary_;
  const TagIndex* types_;  // of the dictionary, where no descendant answers in its own way
  Input& in_;
  std::uint32_t longestPixelValue_;
  bool tracing_;
  bool readsFile_ = false;
};

}  // namespace tessaret
