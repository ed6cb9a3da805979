// Data sets through the public interface, as the verbs want them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include <tessaret/tessaret.hpp>

#include "character_sets.h"
#include "core/type_code.h"
#include "tag_path.h"

namespace tessaret::tool {

/// A call of the library failed; the words are the library's.
class CallError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws CallError after a failure.
void Require(Status status);

/// A new object. Throws CallError.
Ref<IDCMObject> NewObject();

/// An object that shows `data`, which has to outlive it.
Ref<IDCMObject> ObjectOver(DICOMObject& data);

struct ElementFacts {
  VrCode type = 0;
  std::string letters;       // of the type
  std::uint32_t length = 0;  // of its value, or undefined
};

/// What an element is; nothing where there is none.
std::optional<ElementFacts> FactsOf(IDCMObject& object, TagKey tag);

/// The value of an element, which is there: an array of bytes, or empty.
Variant ValueOf(IDCMObject& object, TagKey tag);
/// The bytes of such a value, which stay its own.
std::span<const std::uint8_t> BytesIn(const Variant& value);

/// Item `index` of an element; null where there is none.
Ref<IDCMObject> ItemOf(IDCMObject& object, TagKey tag, std::uint32_t index);
bool HasItems(IDCMObject& object, TagKey tag);

/// The character sets of `object`; those of what is around it where it names none.
CharacterSets SetsOf(IDCMObject& object, const CharacterSets& around);

/// Where a path leads.
struct Place {
  Ref<IDCMObject>
      object;          // that the last element of the path is in; null where there is no such item
  CharacterSets sets;  // that count there
};

Place Find(Ref<IDCMObject> object, const TagPath& path);

}  // namespace tessaret::tool
