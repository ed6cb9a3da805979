// The meta header of a DICOM file, group 0002 (DICOM PS3.10, 7.1).
#pragma once

#include <cstdint>
#include <string_view>

#include "core/dicom_object.h"

namespace tessaret {

inline constexpr std::string_view kImplementationClassUid = "1.2.826.0.1.5518204.7.460.20000624";
inline constexpr std::string_view kImplementationVersionName = "QX/W32/1.6.9";
inline constexpr std::string_view kImplicitLittleUid = "1.2.840.10008.1.2";

/// What `mode` says of the transfer syntax.
inline constexpr std::int32_t kMetaImplicitLittle = 2;
inline constexpr std::int32_t kMetaKeepSyntax = 3;

/// Removes all of group 0002 from `object`, keeping (0002,0010) with kMetaKeepSyntax, and adds it anew with a group length
/// that fits. A syntax longer than its length field can state is kept as its TransferSyntaxText. With the syntax kept,
/// pixel data is declared OW for more than 8 bits allocated and OB otherwise; pixel data that is OB or OW in a big endian
/// syntax stays what it is, because there the two differ in the order of bytes. Throws std::bad_alloc.
void BuildMetaHeader(DICOMObject& object, std::int32_t mode, std::string_view callingAeTitle);

/// The group 0002 that BuildMetaHeader would give `object`, alone, without touching it; `pixelType` becomes the type for its
/// pixel data, or 0 when that stays as it is. The bytes of (0002,0010) are shared with `object`, unless it was shortened.
/// Throws std::bad_alloc.
void BuildMetaHeaderBeside(const DICOMObject& object, std::int32_t mode,
                           std::string_view callingAeTitle, DICOMObject& meta, VrCode& pixelType);

}  // namespace tessaret
