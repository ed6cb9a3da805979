// The UID dictionary: what a UID of the standard denotes. Filled once, and only read from then on by any number of
// threads without a lock.
//
// Each line of its file is an entry of words between blanks or tabs; "#" starts a comment:
//
//   type  UID  number, not 0 for an image class  description  [modality]
#pragma once

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tessaret {

struct UIDEntry {
  std::string UID;
  std::string Description;
  std::string Type;
  std::string Modality;
  bool IsImage = false;
};

/// Why a file could not be read, in the words that a user is shown.
class UidDictionaryError : public std::runtime_error {
 public:
  explicit UidDictionaryError(const std::string& words, bool lacksMemory = false)
      : std::runtime_error(words), lacksMemory_(lacksMemory) {}
  /// Whether memory ran out: the file may be as it should.
  [[nodiscard]] bool LacksMemory() const noexcept { return lacksMemory_; }

 private:
  bool lacksMemory_;
};

class UIDDictionary {
 public:
  /// Adds the entries of a file. Of a UID that is there already, or comes twice, the first entry stays. Throws
  /// UidDictionaryError, with the dictionary as it was, for a file that cannot be read, with the words of the system; for
  /// a line that breaks the grammar, with its number; and for everything else, with the path.
  void Read(const char* path);

  /// The same with the bytes of a file. Throws UidDictionaryError for a line and std::bad_alloc.
  void ReadText(std::string_view text);

  /// True when `uid` is known. Each pointer that is not null then receives its field; otherwise nothing is touched.
  bool Find(std::string_view uid, std::string* description, std::string* type,
            std::string* modality, bool* isImage) const;

  /// The entry of `uid`, or null. It lives as long as the dictionary is not cleared.
  [[nodiscard]] const UIDEntry* FindEntry(std::string_view uid) const;

  void Clear() noexcept { Entries.clear(); }

  std::map<std::string, UIDEntry, std::less<>> Entries;  // by UID
};

}  // namespace tessaret
