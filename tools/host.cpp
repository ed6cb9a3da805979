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
  constexpr std::size_t kLongest =
      1024;  // far more than a UID has; a value of a file may be of any length
  if (uid.size() > kLongest) return std::nullopt;
  String name;
  String type;
  String modality;
  VariantBool isImage;
  VariantBool found;
  Require(Dictionary().GetUIDDescription(String::FromNarrow(uid), &name, &type, &modality, &isImage,
                                         &found));
  if (!found.IsTrue()) return std::nullopt;
  return KnownUid{name.Narrow(), isImage.IsTrue(), type.Narrow() == "TransferSyntax"};
}

std::string Host::NameOfUid(std::string_view uid) {
  const auto known = FindUid(uid);
  return known ? known->name : std::string();
}

std::string Host::SyntaxOfName(std::string_view name) {
  const auto file = Ref<IDcmDictionary>(&Dictionary()).As<IDcmDictionaryFile>();
  String uid;
  VariantBool found;
  for (std::int32_t at = 0;; ++at) {
    Require(file->GetUIDAt(at, &uid, &found));
    if (!found.IsTrue()) return {};
    const auto known = FindUid(uid.Narrow());
    if (known && known->isSyntax && known->name == name) return uid.Narrow();
  }
}

bool Host::ColoursOutput() const {
  return !options.loudness.quiet && IsLivelyTerminal(STDOUT_FILENO);
}

}  // namespace tessaret::tool
