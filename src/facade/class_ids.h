// By what the classes are known for ever, whatever they are called.
#pragma once

#include "component/class_table.h"

namespace tessaret::class_id {

inline constexpr std::uint64_t kHigh = 0x5A51DE9E6B7D4F60;

inline constexpr ClassId kDCMObject{kHigh, 0x91B3C8D4A2F01101};
inline constexpr ClassId kDcmOblique{kHigh, 0x91B3C8D4A2F01102};
inline constexpr ClassId kDCMDicomDir{kHigh, 0x91B3C8D4A2F01103};
inline constexpr ClassId kViewParameter{kHigh, 0x91B3C8D4A2F01104};
inline constexpr ClassId kDCMOptions{kHigh, 0x91B3C8D4A2F01105};
inline constexpr ClassId kImageModule{kHigh, 0x91B3C8D4A2F01106};
inline constexpr ClassId kDcmDictionary{kHigh, 0x91B3C8D4A2F01107};
inline constexpr ClassId kDCMVolume{kHigh, 0x91B3C8D4A2F01108};
inline constexpr ClassId kDcmQueryRetrieve{kHigh, 0x91B3C8D4A2F01109};
inline constexpr ClassId kXDIDomain{kHigh, 0x91B3C8D4A2F0110A};
inline constexpr ClassId kXDIConsumer{kHigh, 0x91B3C8D4A2F0110B};
inline constexpr ClassId kDcmCStore{kHigh, 0x91B3C8D4A2F0110C};

}  // namespace tessaret::class_id
