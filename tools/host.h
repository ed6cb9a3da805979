// What every verb works with: where results and words go, how much is said, and the dictionaries.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

#include <tessaret/tessaret.hpp>

#include "keywords.h"
#include "messages.h"
#include "output.h"
#include "type_code.h"

namespace tessaret::tool {

/// The options that all verbs share.
struct CommonOptions {
  Loudness loudness;
  bool json = false;
};

/// The dictionaries cannot be loaded; the words say why.
class DictionaryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct KnownElement {
  VrCode type = type_code::kNone;
  std::string name;
};

struct KnownUid {
  std::string name;
  bool isImage = false;   // objects of this class are images
  bool isSyntax = false;  // it is a transfer syntax
};

class Host {
 public:
  Output output;
  Messages messages;
  CommonOptions options;

  /// The dictionaries of the library, loaded at the first call, which comes before any object is made. Throws DictionaryError.
  IDcmDictionary& Dictionary();

  /// The elements by their keywords. Throws DictionaryError.
  Keywords& ElementKeywords();
  /// What the dictionary has for an element; null for an unknown one. Kept, for those who ask for every element of a
  /// file. Throws DictionaryError.
  const KnownElement* FindElement(TagKey tag);
  /// The type of that; none for an unknown one.
  VrCode TypeOfElement(TagKey tag);
  bool Knows(TagKey tag) { return TypeOfElement(tag) != type_code::kNone; }

  /// What the dictionary has for a UID; nothing for an unknown one. Throws DictionaryError.
  std::optional<KnownUid> FindUid(std::string_view uid);
  /// The name of that; empty for an unknown one.
  std::string NameOfUid(std::string_view uid);
  /// The UID of the transfer syntax of this name; empty where the dictionary has none. Throws DictionaryError.
  std::string SyntaxOfName(std::string_view name);

  /// True when results may be coloured.
  [[nodiscard]] bool ColoursOutput() const;

 private:
  Ref<IDcmDictionary> dictionary_;
  std::optional<Keywords> keywords_;
  std::unordered_map<TagKey, KnownElement> known_;
};

}  // namespace tessaret::tool
