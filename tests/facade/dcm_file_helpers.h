// The interface by which hosts look closely at files, read in few words.
#pragma once

#include <string>

#include "facade/dcm_object_helpers.h"
#include "support/data_set_builder.h"

namespace tessaret::test {

inline Ref<IDcmFile> FileFacetOf(const Ref<IDCMObject>& object) { return object.As<IDcmFile>(); }

inline Variant BytesVariant(const Bytes& bytes) { return Variant(VariantArray::OfBytes(bytes)); }

inline Bytes BytesIn(const Variant& value) {
  if (value.AsArray() == nullptr) return {};
  const auto bytes = value.AsArray()->Bytes();
  return {bytes.begin(), bytes.end()};
}

/// What GetElement tells.
struct Stored {
  VariantBool found;
  std::string type = "untouched";
  double length = -7;
  double offset = -7;
  VariantBool hasValue;
  std::int32_t items = -7;
};

inline Stored StoredIn(const Ref<IDcmFile>& file, std::int32_t group, std::int32_t element) {
  Stored stored;
  String type("untouched");
  EXPECT_EQ(file->GetElement(group, element, &type, &stored.length, &stored.offset,
                             &stored.hasValue, &stored.items, &stored.found),
            kOk);
  stored.type = type.Narrow();
  return stored;
}

/// What GetEnd and GetOddity tell.
struct Met {
  std::int32_t what = -7;
  double offset = -7;
  std::int32_t group = -7;
  std::int32_t element = -7;
  friend bool operator==(const Met&, const Met&) = default;
};

inline Met EndOf(const Ref<IDcmFile>& file) {
  Met met;
  auto end = static_cast<_EnumReadingEnd>(-7);
  EXPECT_EQ(file->GetEnd(&met.offset, &met.group, &met.element, &end), kOk);
  met.what = end;
  return met;
}

inline Met OddityOf(const Ref<IDcmFile>& file, std::int32_t index) {
  Met met;
  auto kind = static_cast<_EnumReadingOddity>(-7);
  EXPECT_EQ(file->GetOddity(index, &met.offset, &met.group, &met.element, &kind), kOk);
  met.what = kind;
  return met;
}

}  // namespace tessaret::test
