#include "reading.h"

#include "class_object.h"

namespace tessaret::tool {

Reading ReadingOf(IDcmFile& file) {
  Reading reading;
  double offset = 0;
  std::int32_t group = 0;
  std::int32_t element = 0;
  const auto tag = [&] {
    return MakeTagKey(static_cast<std::uint16_t>(group), static_cast<std::uint16_t>(element));
  };
  Require(file.GetEnd(&offset, &group, &element, &reading.end.why));
  reading.end.offset = static_cast<std::uint64_t>(offset);
  reading.end.tag = tag();
  const std::int32_t count = AnswerOf(file, &IDcmFile::get_OdditiesCount);
  for (std::int32_t index = 0; index < count; ++index) {
    _EnumReadingOddity kind = ODDITY_NONE;
    Require(file.GetOddity(index, &offset, &group, &element, &kind));
    reading.oddities.push_back({kind, static_cast<std::uint64_t>(offset), tag()});
  }
  return reading;
}

}  // namespace tessaret::tool
