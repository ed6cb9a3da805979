// What every verb works with: where results and words go, how much is said, and the dictionaries.
#pragma once

#include <string>
#include <string_view>

#include "core/rtc.h"
#include "core/uid_dictionary.h"
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

  /// The name that the dictionary has for a UID; empty for an unknown one.
  std::string NameOfUid(std::string_view uid);

  /// True when results may be coloured.
  [[nodiscard]] bool ColoursOutput() const;

 private:
  void LoadDictionaries();

  bool dictionariesLoaded_ = false;
};

}  // namespace tessaret::tool
