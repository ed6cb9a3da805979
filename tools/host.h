// What every verb works with: where results and words go, how much is said, and the dictionaries.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <tessaret/tessaret.hpp>

#include "core/rtc.h"
#include "core/type_code.h"
#include "core/uid_dictionary.h"
#include "keywords.h"
#include "messages.h"
#include "output.h"

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

class Host {
 public:
  Output output;
  Messages messages;
  CommonOptions options;

  /// The dictionaries of the library, loaded at the first call. Throws DictionaryError.
  const RTC& Tags();
  const UIDDictionary& Uids();

  /// The dictionaries as the public interface has them. Throws DictionaryError.
  IDcmDictionary& Dictionary();

  /// The elements by their keywords. Throws DictionaryError.
  Keywords& ElementKeywords();
  /// The type that the dictionary has for an element; none for an unknown one. Throws DictionaryError.
  VrCode TypeOfElement(TagKey tag);

  /// The name that the dictionary has for a UID; empty for an unknown one.
  std::string NameOfUid(std::string_view uid);

  /// True when results may be coloured.
  [[nodiscard]] bool ColoursOutput() const;

 private:
  void LoadDictionaries();

  bool dictionariesLoaded_ = false;
  Ref<IDcmDictionary> dictionary_;
  std::optional<Keywords> keywords_;
};

}  // namespace tessaret::tool
