#include "transfer_syntaxes.h"

#include <algorithm>
#include <iterator>

#include "uid.h"

namespace tessaret::tool {
namespace {

struct SyntaxRow {
  std::string_view word;
  std::string_view keyword;
  std::string_view uid;
};

constexpr SyntaxRow kSyntaxes[] = {
    {"implicit", "ImplicitVRLittleEndian", kImplicitLittle},
    {"explicit", "ExplicitVRLittleEndian", kExplicitLittle},
    {"big", "ExplicitVRBigEndian", kExplicitBig},
    {"deflated", "DeflatedExplicitVRLittleEndian", "1.2.840.10008.1.2.1.99"},
    {"jpeg", "JPEGBaseline8Bit", "1.2.840.10008.1.2.4.50"},
    {"jpeg-12bit", "JPEGExtended12Bit", "1.2.840.10008.1.2.4.51"},
    {"jpeg-lossless", "JPEGLosslessSV1", "1.2.840.10008.1.2.4.70"},
    {"jpeg-ls", "JPEGLSLossless", "1.2.840.10008.1.2.4.80"},
    {"jpeg-ls-lossy", "JPEGLSNearLossless", "1.2.840.10008.1.2.4.81"},
    {"jpeg2000-lossless", "JPEG2000Lossless", "1.2.840.10008.1.2.4.90"},
    {"jpeg2000", "JPEG2000", "1.2.840.10008.1.2.4.91"},
    {"htj2k-lossless", "HTJ2KLossless", "1.2.840.10008.1.2.4.201"},
    {"htj2k", "HTJ2K", "1.2.840.10008.1.2.4.203"},
    {"rle", "RLELossless", "1.2.840.10008.1.2.5"},
};

}  // namespace

std::string SyntaxUid(std::string_view name) {
  if (IsUid(name) && name.find('.') != std::string_view::npos) return std::string(name);
  const auto* row = std::find_if(std::begin(kSyntaxes), std::end(kSyntaxes), [&](const auto& each) {
    return each.word == name || each.keyword == name;
  });
  return row == std::end(kSyntaxes) ? std::string() : std::string(row->uid);
}

std::string SyntaxWords() {
  std::string words;
  for (const SyntaxRow& row : kSyntaxes) words.append(words.empty() ? "" : ", ").append(row.word);
  return words;
}

}  // namespace tessaret::tool
