// Keywords of data elements, "PatientName" (DICOM PS3.6): made of the names that the dictionary has.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tessaret/tessaret.hpp>

#include "tag.h"

namespace tessaret::tool {

/// The keyword of the element with this name: its words without what stands between them, each with a capital, "Patient's Name" as
/// "PatientName". A number of keywords are not what that gives; they stand in a table.
std::string KeywordOf(std::string_view name);

/// The elements of a dictionary by their keywords.
class Keywords {
 public:
  /// All of `dictionary`, read at the first question.
  explicit Keywords(Ref<IDcmDictionary> dictionary) : dictionary_(std::move(dictionary)) {}

  /// Where several elements have the name, as those of overlays, the lowest.
  std::optional<TagKey> Find(const std::string& keyword);

  /// The keyword of an element; empty for an unknown one.
  std::string Of(TagKey tag) const;

 private:
  void Read();

  struct Entry {
    std::string keyword;
    TagKey tag;
  };

  Ref<IDcmDictionary> dictionary_;
  // In the order of the tags. A command asks for a few: to go through all is less than to bring them into another order.
  std::vector<Entry> tags_;
};

}  // namespace tessaret::tool
