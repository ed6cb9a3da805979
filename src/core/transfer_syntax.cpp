#include "core/transfer_syntax.h"

namespace tessaret {
namespace {

constexpr TransferSyntaxCodec kFixed[] = {
    {"1.2.840.10008.1.2", 0, kImplicitLittle, 0},
    {"1.2.840.10008.1.2.1", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.2", 0, kExplicitBig, 0},
    {"1.2.840.10008.1.2.5", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.50", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.51", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.52", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.53", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.54", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.55", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.56", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.57", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.58", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.59", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.60", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.61", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.62", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.63", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.64", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.65", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.66", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.70", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.80", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.81", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.90", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.91", 0, kExplicitLittle, 0},
    {"1.2.840.10008.1.2.4.100", 0, kExplicitLittle, 0},
    {"", 0, 0, 0},
};

constexpr std::uint32_t CountUntilEmpty() {
  std::uint32_t count = 0;
  while (kFixed[count].UID[0] != '\0') ++count;
  return count;
}

constexpr std::uint32_t kFixedCount = CountUntilEmpty();

constexpr bool UidsAreUnique() {
  for (std::uint32_t a = 0; a < kFixedCount; ++a) {
    for (std::uint32_t b = a + 1; b < kFixedCount; ++b) {
      if (std::string_view(kFixed[a].UID) == std::string_view(kFixed[b].UID)) return false;
    }
  }
  return true;
}

static_assert(kFixedCount == 27 && UidsAreUnique());

}  // namespace

bool IsOfNativePixels(std::string_view uid) {
  const auto code = FindTransferSyntax(uid);
  // Of the explicit little endian ones all others are compressed.
  return code && (*code != kExplicitLittle || uid == "1.2.840.10008.1.2.1");
}

const TransferSyntaxCodec* FixedTransferSyntaxes() { return kFixed; }

std::uint32_t FixedTransferSyntaxCount() { return kFixedCount; }

Array<TransferSyntaxCodec>& AddedTransferSyntaxes() {
  static Array<TransferSyntaxCodec> added;
  return added;
}

std::optional<std::int32_t> FindTransferSyntax(std::string_view uid) {
  if (uid.empty()) return std::nullopt;
  for (std::uint32_t at = 0; at < kFixedCount; ++at) {
    if (uid == kFixed[at].UID) return kFixed[at].Code;
  }
  for (const auto* node = AddedTransferSyntaxes().First; node != nullptr; node = node->next) {
    if (uid == node->value.UID) return node->value.Code;
  }
  return std::nullopt;
}

}  // namespace tessaret
