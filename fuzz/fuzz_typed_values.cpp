// Values of elements by their type: any bytes as any type, at any index, and any value put there. What is refused changes
// nothing, what was put is there again, and bytes that others share stay as they are.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/binary_vr.h"
#include "core/dicom_object.h"
#include "core/person_name.h"
#include "core/string_vr.h"
#include "core/variant_vr.h"
#include "core/vr_properties.h"
#include "support.h"
#include "tessaret/calendar.hpp"

namespace {

using namespace tessaret;
using tessaret::fuzz::Require;

constexpr std::size_t kHead = 9;

/// How an input is laid out: type, letters, form of the value, options, index, bytes of the value, then those of the
/// element.
struct Case {
  Case(const std::uint8_t* data, std::size_t size) {
    std::uint8_t head[kHead] = {};
    std::copy_n(data, std::min(size, kHead), head);
    const std::size_t row = head[0] % (std::size(kVrProperties) + 1);
    type = row < std::size(kVrProperties)
               ? kVrProperties[row].code
               : MakeTypeCode(static_cast<char>(head[1]), static_cast<char>(head[2]));
    form = head[2];
    options = head[3];
    std::memcpy(&index, head + 4, sizeof(index));
    if (Option(0)) index &= 7;
    std::span<const std::uint8_t> rest(data, size);
    rest = rest.subspan(std::min(size, kHead));
    value = rest.subspan(0, std::min<std::size_t>(head[8], rest.size()));
    element = rest.subspan(value.size());
  }
  [[nodiscard]] bool Option(unsigned bit) const { return (options >> bit & 1) != 0; }

  VrCode type;
  unsigned form;
  unsigned options;
  std::int32_t index = 0;
  std::span<const std::uint8_t> value;
  std::span<const std::uint8_t> element;
};

template <class T>
T NumberIn(std::span<const std::uint8_t> bytes) {
  T number{};
  if (!bytes.empty()) std::memcpy(&number, bytes.data(), std::min(sizeof(T), bytes.size()));
  return number;
}

std::string_view TextIn(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

VariantArray ArrayIn(std::span<const std::uint8_t> bytes, VariantType type) {
  const std::size_t count = bytes.size() / EntrySize(type);
  VariantArray array(type, static_cast<std::uint32_t>(count));
  if (count != 0) std::memcpy(array.Data(), bytes.data(), array.ByteCount());
  return array;
}

Variant ValueIn(const Case& input) {
  switch (input.form % 13) {
    case 0:
      return {};
    case 1:
      return NumberIn<std::int16_t>(input.value);
    case 2:
      return NumberIn<std::int32_t>(input.value);
    case 3:
      return NumberIn<float>(input.value);
    case 4:
      return NumberIn<double>(input.value);
    case 5:
      return VariantBool::Of(NumberIn<std::int16_t>(input.value));
    case 6:
      return Date{NumberIn<double>(input.value)};
    case 7:
      return NumberIn<std::uint8_t>(input.value);
    case 8:
      return ArrayIn(input.value, VariantType::kByte);
    case 9:
      return ArrayIn(input.value, VariantType::kSignedByte);
    case 10:
      return ArrayIn(input.value, VariantType::kShort);
    case 11:
      return Variant(static_cast<IObject*>(nullptr));
    default:
      return String::FromNarrow(TextIn(input.value));
  }
}

/// The element that is looked at, and the bytes that it was made from.
struct Subject {
  explicit Subject(const Case& input) : shared(input.element.begin(), input.element.end()) {
    vr.TypeCode = input.type;
    const auto length = static_cast<std::uint32_t>(shared.size());
    if (input.Option(1)) {
      vr.Length = length;
    } else if (input.Option(2)) {
      vr.ReplaceValue(shared.data(), length);
    } else if (length != 0) {
      vr.Length = length;
      vr.Data = shared.data();
      vr.OwnsData = 0;
    }
    if (input.Option(3)) vr.AddItem(new DICOMObject);
  }
  [[nodiscard]] std::string Bytes() const { return std::string(ValueText(vr)); }

  std::vector<std::uint8_t> shared;
  VR vr;
};

VariantType OutsideType(ValueKind kind) {
  switch (kind) {
    case ValueKind::kText:
    case ValueKind::kLoneText:
    case ValueKind::kTime:
      return VariantType::kString;
    case ValueKind::kInteger:
    case ValueKind::kUnsigned16:
    case ValueKind::kSigned32:
      return VariantType::kLong;
    case ValueKind::kSigned16:
      return VariantType::kShort;
    case ValueKind::kDecimal:
    case ValueKind::kUnsigned32:
    case ValueKind::kDouble:
      return VariantType::kDouble;
    case ValueKind::kFloat:
      return VariantType::kFloat;
    case ValueKind::kDate:
    case ValueKind::kDateTime:
      return VariantType::kDate;
    case ValueKind::kSequence:
    case ValueKind::kBytes:
      break;
  }
  return VariantType::kByte;
}

bool ThrowsWords(const VrProperties& properties, std::int32_t index) {
  return properties.kind == ValueKind::kLoneText && index != 0;
}

/// Value number `index`; nothing where its words were thrown.
std::optional<Variant> Read(VR& vr, std::int32_t index) {
  const VrProperties& properties = PropertiesOf(vr.TypeCode);
  try {
    Variant value = CVariantVR(&vr).VRToVariant(index);
    Require(value.IsEmpty() || value.Type() == OutsideType(properties.kind),
            "a value of the type that is promised");
    Require(!value.IsEmpty() || vr.Data == nullptr || properties.kind != ValueKind::kText,
            "text is never empty");
    return value;
  } catch (const TypedValueError&) {
    Require(ThrowsWords(properties, index) && vr.Data != nullptr, "words for one text alone");
    return std::nullopt;
  }
}

/// Where a value put at `index` comes to stand.
std::int32_t PlaceOf(const VrProperties& properties, std::string_view old, std::int32_t index) {
  const bool appends = properties.kind == ValueKind::kText ||
                       properties.kind == ValueKind::kInteger ||
                       properties.kind == ValueKind::kDecimal;
  const std::uint64_t count = CountTexts(old);
  if (!appends || count == 0 || static_cast<std::uint64_t>(index) < count) return index;
  // What is left of a value of white space holds one text still.
  std::string_view kept = old;
  while (!kept.empty() &&
         (kept.back() == '\0' || std::strchr(" \t\n\v\f\r", kept.back()) != nullptr))
    kept.remove_suffix(1);
  return static_cast<std::int32_t>(std::max<std::uint64_t>(CountTexts(kept), 1));
}

void RequireThereAgain(Subject& subject, const Variant& put, const std::string& old,
                       std::int32_t index) {
  const VrProperties& properties = PropertiesOf(subject.vr.TypeCode);
  const std::optional<Variant> got = properties.kind == ValueKind::kBytes
                                         ? Read(subject.vr, index)
                                         : Read(subject.vr, PlaceOf(properties, old, index));
  if (put.IsEmpty()) {
    Require(subject.vr.Length == 0 && subject.vr.Data == nullptr, "empty clears");
    return;
  }
  Require(got.has_value(), "what was put can be read");
  switch (properties.kind) {
    case ValueKind::kBytes: {
      const std::span<const std::uint8_t> bytes = put.AsArray()->Bytes();
      Require(subject.vr.Length == bytes.size() + bytes.size() % 2, "an even length");
      Require(std::equal(bytes.begin(), bytes.end(), subject.vr.Data), "the bytes that were put");
      Require(bytes.size() % 2 == 0 || subject.vr.Data[bytes.size()] == 0, "padded with a NUL");
      break;
    }
    case ValueKind::kUnsigned16:
    case ValueKind::kSigned16:
    case ValueKind::kUnsigned32:
    case ValueKind::kSigned32: {
      Variant number = put;
      Variant outside = *got;
      Require(number.ChangeType(VariantType::kLong) == kOk, "only numbers are put");
      Require(outside.ChangeType(VariantType::kDouble) == kOk, "numbers come out");
      const double width =
          properties.kind == ValueKind::kUnsigned16 || properties.kind == ValueKind::kSigned16
              ? 65536.0
              : 4294967296.0;
      const double difference = outside.AsDouble() - static_cast<double>(number.AsLong());
      Require(std::fmod(difference, width) == 0, "the low bits of the number");
      break;
    }
    case ValueKind::kDouble: {
      Variant number = put;
      Require(number.ChangeType(VariantType::kDouble) == kOk, "only numbers are put");
      Require(number.AsDouble() == got->AsDouble() || std::isnan(number.AsDouble()), "the number");
      break;
    }
    case ValueKind::kText: {
      Variant text = put;
      Require(text.ChangeType(VariantType::kString) == kOk, "only text is put");
      const std::string narrow = text.ToString().Narrow();
      const std::string_view cut = std::string_view(narrow).substr(
          0, properties.limit == 0 ? narrow.npos : properties.limit);
      if (cut.find('\\') != std::string_view::npos) break;
      Require(got->ToString().Narrow() == NthTextUnpadded(cut, 0), "the text that was put");
      break;
    }
    case ValueKind::kInteger: {
      Variant number = put;
      Require(number.ChangeType(VariantType::kLong) == kOk && number.AsLong() == got->AsLong(),
              "the whole number that was put");
      break;
    }
    case ValueKind::kDate:
    case ValueKind::kDateTime: {
      Variant date = put;
      Require(date.ChangeType(VariantType::kDate) == kOk, "only dates are put");
      const auto in = ToCalendar(date.AsDate());
      const auto out = ToCalendar(got->AsDate());
      Require(in && out && in->year == out->year && in->month == out->month && in->day == out->day,
              "the day that was put");
      Require(properties.kind == ValueKind::kDate || *in == *out, "the moment that was put");
      break;
    }
    case ValueKind::kLoneText:
    case ValueKind::kDecimal:
    case ValueKind::kTime:
    case ValueKind::kFloat:
    case ValueKind::kSequence:
      break;
  }
}

void CheckVariant(const Case& input) {
  Subject subject(input);
  const std::string old = subject.Bytes();
  const std::vector<std::uint8_t> shared = subject.shared;
  const std::uint32_t oldLength = subject.vr.Length;
  static_cast<void>(CVariantVR(&subject.vr).VRMultiplicity());
  Read(subject.vr, input.index);
  Require(subject.Bytes() == old, "reading changes nothing");

  const Variant value = ValueIn(input);
  bool put = false;
  try {
    put = CVariantVR(&subject.vr).VariantToVR(value, input.index);
  } catch (const TypedValueError&) {
    Require(ThrowsWords(PropertiesOf(input.type), input.index), "words for one text alone");
  }
  Require(subject.shared == shared, "bytes of others stay");
  Require(subject.vr.TypeCode == input.type, "the type stays");
  Require(subject.vr.ItemCount() == (input.Option(3) ? 1 : 0), "items stay");
  if (!put) {
    Require(subject.Bytes() == old && subject.vr.Length == oldLength, "a refusal changes nothing");
  } else if (PropertiesOf(input.type).kind != ValueKind::kSequence) {
    RequireThereAgain(subject, value, old, input.index);
  }
}

/// Puts bytes through a view and reads them again.
template <class View>
void CheckView(const Case& input) {
  Subject subject(input);
  const std::vector<std::uint8_t> shared = subject.shared;
  const std::string old = subject.Bytes();
  View view(subject.vr);
  std::string before;
  const bool wasThere = view.GetValue(input.index, before);
  const bool put = view.PutValue(input.index, TextIn(input.value));
  Require(subject.shared == shared, "bytes of others stay");
  if (!put) {
    Require(subject.Bytes() == old, "a refusal changes nothing");
    return;
  }
  std::string after;
  const bool isThere = view.GetValue(input.index, after);
  Require(isThere || subject.vr.Length == 0, "what was put is there");
  if (view.ValueWidth() != 0 && std::is_base_of_v<VR_XXBINARY, View>) {
    Require(after == TextIn(input.value), "the bytes that were put");
    Require(!wasThere || subject.vr.Length == old.size(), "a value in its place changes no length");
  }
}

void CheckWire(const Case& input) {
  const VrLO text;
  const VrUI uid;
  const VrAT tag;
  for (const VR_XXTYPED* view :
       {static_cast<const VR_XXTYPED*>(&text), static_cast<const VR_XXTYPED*>(&uid),
        static_cast<const VR_XXTYPED*>(&tag)}) {
    // Exactly as large as told, so that the sanitizer sees a byte behind it.
    const std::size_t size = input.element.size();
    const auto block = std::make_unique<std::uint8_t[]>(size);
    std::copy(input.element.begin(), input.element.end(), block.get());
    view->ToWire(static_cast<std::uint32_t>(size), block.get());
    view->FromWire(static_cast<std::uint32_t>(size), block.get());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Case input(data, size);
  CheckVariant(input);
  CheckView<VrAE>(input);
  CheckView<VrDA>(input);
  CheckView<VrLO>(input);
  CheckView<VrPN>(input);
  CheckView<VrLT>(input);
  CheckView<VrSQ>(input);
  CheckView<VrUS>(input);
  CheckView<VrFD>(input);
  CheckView<VrOX>(input);
  CheckWire(input);
  return 0;
}
