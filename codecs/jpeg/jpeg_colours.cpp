#include "jpeg/jpeg_colours.h"

namespace tessaret::codecs {

bool AreYcc(const ColourMarks& marks, const std::string& photometric, bool guess) {
  if (marks.adobeTransform && *marks.adobeTransform <= 1) return *marks.adobeTransform == 1;
  if (marks.hasJfif || photometric.starts_with("YBR_")) return true;
  return photometric != "RGB" && guess;
}

}  // namespace tessaret::codecs
