#include "host.h"

#include <unistd.h>

#include "class_object.h"
#include "standard_streams.h"
#include "vr_traits.h"

namespace tessaret::tool {

IDcmDictionary& Host::Dictionary() {
  if (dictionary_) return *dictionary_;
  // First, for its words are better than those of a class that cannot be made.
  const bool isThere =
      !Failed(StartLibrary()) && !Failed(Create("Tessaret.DcmDictionary", dictionary_));
  if (!isThere) throw DictionaryError(LastError().text);
  return *dictionary_;
}

Keywords& Host::ElementKeywords() {
  if (!keywords_) keywords_.emplace(Ref<IDcmDictionary>(&Dictionary()));
  return *keywords_;
}

const KnownElement* Host::FindElement(TagKey tag) {
  const auto place = known_.find(tag);
  if (place != known_.end()) return &place->second;
  String letters;
  String name;
  VariantBool found;
  Require(Dictionary().GetVRDescription(GroupOf(tag), ElementOf(tag), &letters, &name, &found));
  if (!found.IsTrue()) return nullptr;
  return &known_.emplace(tag, KnownElement{TypeCodeOf(letters.Narrow()), name.Narrow()})
              .first->second;
}

VrCode Host::TypeOfElement(TagKey tag) {
  const KnownElement* known = FindElement(tag);
  return known == nullptr ? type_code::kNone : known->type;
}

std::optional<KnownUid> Host::FindUid(std::string_view uid) {
  String name;
  String type;
  String modality;
  VariantBool isImage;
  VariantBool found;
  Require(Dictionary().GetUIDDescription(String::FromNarrow(uid), &name, &type, &modality, &isImage,
                                         &found));
  if (!found.IsTrue()) return std::nullopt;
  return KnownUid{name.Narrow(), isImage.IsTrue()};
}

std::string Host::NameOfUid(std::string_view uid) {
  const auto known = FindUid(uid);
  return known ? known->name : std::string();
}

bool Host::ColoursOutput() const {
  return !options.loudness.quiet && IsLivelyTerminal(STDOUT_FILENO);
}

}  // namespace tessaret::tool
