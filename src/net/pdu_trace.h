// Lines of the trace file about the fields of PDUs and items, where kDumpPdu is on.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "core/trace.h"

namespace tessaret::pdu_trace {

/// "Reading NAME Type=XX" or "Writing NAME Type=XX".
void Start(bool isReading, const char* name, std::uint8_t type);

/// Behind that many tabs: "NAME [BYTES]=VALUE", the value in hexadecimal.
void Field(int tabs, const char* name, int bytes, std::uint32_t value);
/// "NAME [COUNT]=", and a listing of the bytes.
void Field(int tabs, const char* name, std::span<const std::uint8_t> bytes);
/// "NAME=[VALUE]".
void Field(int tabs, const char* name, std::string_view value);

/// The fields behind the type of every item.
void Head(int tabs, std::uint8_t reserved, std::uint16_t length);
/// And of every PDU.
void PduHead(std::uint8_t reserved, std::uint32_t length);

}  // namespace tessaret::pdu_trace
