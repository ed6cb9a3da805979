// What becomes of text that keeps its bytes while (0008,0005) changes around it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <tessaret/tessaret.hpp>

#include "tag_path.h"

namespace tessaret::tool {

/// What an element (0008,0005) had before it was changed or removed.
struct FormerCharacterSet {
  TagPath path;
  std::optional<std::string> value;  // nothing where there was no such element
};

class CharacterSetChange {
 public:
  /// Keeps what is at `path` in `object` as long as that has not changed. Nothing is done for other elements than (0008,0005).
  /// Throws CallError and std::bad_alloc.
  void Keep(const Ref<IDCMObject>& object, const TagPath& path);

  /// The first text in `object`, "(0010,0010)", that has other characters now than it had by what was kept, or empty. What was
  /// `written` since is passed over. Throws CallError, Interrupted and std::bad_alloc.
  [[nodiscard]] std::string FirstOtherText(const Ref<IDCMObject>& object,
                                           const std::vector<TagPath>& written) const;

 private:
  std::vector<FormerCharacterSet> former_;
};

}  // namespace tessaret::tool
