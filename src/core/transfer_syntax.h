// The transfer syntaxes that the library knows, and how each writes its elements (DICOM PS3.5, annex A).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/array.h"

namespace tessaret {

/// How elements are encoded. Compressed syntaxes differ from explicit little endian in their pixel data only.
inline constexpr std::int32_t kImplicitLittle = 100;
inline constexpr std::int32_t kExplicitLittle = 101;
inline constexpr std::int32_t kExplicitBig = 102;

constexpr bool IsImplicit(std::int32_t code) { return code == kImplicitLittle; }
constexpr bool IsBigEndian(std::int32_t code) {
  return code != kImplicitLittle && code != kExplicitLittle;
}

/// One entry of the syntax table.
struct TransferSyntaxCodec {
  char UID[64];  // NUL terminated
  std::int32_t reserved1;
  std::int32_t Code;
  std::int32_t reserved2;
};

/// The code of a UID, by exact comparison with the fixed entries in their order and then with those added at run time.
/// Nothing for a UID that is in neither.
std::optional<std::int32_t> FindTransferSyntax(std::string_view uid);

/// Whether native pixel data are in their place by the name of this syntax. Not where it is unknown.
bool IsOfNativePixels(std::string_view uid);

/// The fixed entries; the last one has an empty UID.
const TransferSyntaxCodec* FixedTransferSyntaxes();
/// How many they are, without the last.
std::uint32_t FixedTransferSyntaxCount();
/// Entries added at run time, searched behind the fixed ones. To be filled before other threads read.
Array<TransferSyntaxCodec>& AddedTransferSyntaxes();

}  // namespace tessaret
