// What the last load noted.
#include <algorithm>
#include <iterator>
#include <memory>

#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {

using namespace dcm_object;

namespace {

struct EndRow {
  ParseStop::Why why;
  _EnumReadingEnd end;
};

constexpr EndRow kEnds[] = {
    {ParseStop::Why::kNone, READ_TO_THE_END},
    {ParseStop::Why::kTruncated, READ_CUT_ELEMENT},
    {ParseStop::Why::kMissingEnd, READ_NO_DELIMITER},
    {ParseStop::Why::kStrayTag, READ_STRAY_TAG},
    {ParseStop::Why::kUnknownSyntax, READ_UNKNOWN_SYNTAX},
    {ParseStop::Why::kPixelData, READ_TO_PIXELS},
    {ParseStop::Why::kOrphanItem, READ_ORPHAN_ITEM},
    {ParseStop::Why::kTooDeep, READ_TOO_DEEP},
    {ParseStop::Why::kTooLong, READ_TOO_LONG},
};

struct OddityRow {
  ParseOddity::Kind kind;
  _EnumReadingOddity oddity;
};

constexpr OddityRow kOddities[] = {
    {ParseOddity::Kind::kCutByView, ODDITY_VALUE_BEYOND_ITEM},
    {ParseOddity::Kind::kWrongLength, ODDITY_WRONG_LENGTH},
    {ParseOddity::Kind::kElementInSequence, ODDITY_ELEMENT_IN_SEQUENCE},
    {ParseOddity::Kind::kItemOutside, ODDITY_ITEM_OUTSIDE},
    {ParseOddity::Kind::kStrayFragment, ODDITY_STRAY_FRAGMENT},
    {ParseOddity::Kind::kNotASequence, ODDITY_NOT_A_SEQUENCE},
    {ParseOddity::Kind::kNoDelimiter, ODDITY_NO_DELIMITER},
    {ParseOddity::Kind::kStrayDelimiter, ODDITY_STRAY_DELIMITER},
    {ParseOddity::Kind::kWrongDelimiter, ODDITY_WRONG_DELIMITER},
    {ParseOddity::Kind::kLateSyntax, ODDITY_LATE_SYNTAX},
    {ParseOddity::Kind::kNoLetters, ODDITY_NO_LETTERS},
    {ParseOddity::Kind::kTwice, ODDITY_TWICE},
};
static_assert(std::size(kOddities) == ParseOddity::kKinds);

const ReadingNotes& NotesIn(const std::unique_ptr<ReadingNotes>& notes) {
  static const ReadingNotes none;
  return notes ? *notes : none;
}

}  // namespace

Status CDCMObject::get_ReadEncoding(_EnumDataEncoding* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = static_cast<_EnumDataEncoding>(NotesIn(notes_).code);
  return kOk;
}

Status CDCMObject::get_HasMark(VariantBool* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = NotesIn(notes_).hasMark;
  return kOk;
}

Status CDCMObject::get_BytesRead(double* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = NotesIn(notes_).bytesRead;
  return kOk;
}

Status CDCMObject::get_NamedSyntax(String* pVal) {
  if (pVal == nullptr) return kPointer;
  return AnswerOfFile([&] {
    *pVal = String::FromNarrow(NotesIn(notes_).head.syntax);
    return kOk;
  });
}

Status CDCMObject::get_NamedEncoding(_EnumDataEncoding* pVal) {
  if (pVal == nullptr) return kPointer;
  const std::string& named = NotesIn(notes_).head.syntax;
  const auto code = named.empty() ? std::nullopt : FindTransferSyntax(named);
  *pVal = static_cast<_EnumDataEncoding>(code.value_or(ENCODING_NONE));
  return kOk;
}

Status CDCMObject::GetFirstTag(std::int32_t* Group, std::int32_t* Element, VariantBool* Found) {
  if (Group == nullptr || Element == nullptr || Found == nullptr) return kPointer;
  const auto& tag = NotesIn(notes_).head.firstTag;
  *Found = tag.has_value();
  if (!tag) return kOk;
  *Group = GroupOf(*tag);
  *Element = ElementOf(*tag);
  return kOk;
}

Status CDCMObject::GetMetaLength(double* Stated, double* Counted, VariantBool* Found) {
  if (Stated == nullptr || Counted == nullptr || Found == nullptr) return kPointer;
  const FileHead& head = NotesIn(notes_).head;
  *Found = head.claimed && head.counted;
  if (!Found->IsTrue()) return kOk;
  *Stated = *head.claimed;
  *Counted = static_cast<double>(*head.counted);
  return kOk;
}

Status CDCMObject::GetEnd(double* Offset, std::int32_t* Group, std::int32_t* Element,
                          _EnumReadingEnd* End) {
  if (Offset == nullptr || Group == nullptr || Element == nullptr || End == nullptr)
    return kPointer;
  const ParseStop& stop = NotesIn(notes_).stop;
  *End = std::ranges::find(kEnds, stop.why, &EndRow::why)->end;
  *Offset = static_cast<double>(stop.position);
  *Group = stop.group;
  *Element = stop.element;
  return kOk;
}

Status CDCMObject::get_SystemError(String* pVal) {
  if (pVal == nullptr) return kPointer;
  return AnswerOfFile([&] {
    *pVal = String::FromUtf8(NotesIn(notes_).systemError);
    return kOk;
  });
}

Status CDCMObject::get_OdditiesCount(std::int32_t* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = static_cast<std::int32_t>(NotesIn(notes_).oddities.size());
  return kOk;
}

Status CDCMObject::GetOddity(std::int32_t Idx, double* Offset, std::int32_t* Group,
                             std::int32_t* Element, _EnumReadingOddity* Kind) {
  if (Offset == nullptr || Group == nullptr || Element == nullptr || Kind == nullptr)
    return kPointer;
  const auto& oddities = NotesIn(notes_).oddities;
  *Kind = ODDITY_NONE;
  if (Idx < 0 || static_cast<std::size_t>(Idx) >= oddities.size()) return kOk;
  const ParseOddity& oddity = oddities[static_cast<std::size_t>(Idx)];
  *Kind = std::ranges::find(kOddities, oddity.kind, &OddityRow::kind)->oddity;
  *Offset = static_cast<double>(oddity.position);
  *Group = oddity.group;
  *Element = oddity.element;
  return kOk;
}

}  // namespace tessaret
