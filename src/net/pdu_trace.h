// Lines of the trace file about the fields of PDUs and items, where kDumpPdu is on.
#pragma once

#include <cstdint>
#include <string_view>

#include "core/trace.h"

namespace tessaret::pdu_trace {

/// "NAME (BYTES)=[VALUE]", behind that many tabs.
void Field(int tabs, const char* name, int bytes, std::uint32_t value);
void Field(int tabs, const char* name, std::string_view value);

/// "Reading NAME Type=XX" or "Writing NAME Type=XX".
void Start(bool isReading, int tabs, const char* name, std::uint8_t type);

}  // namespace tessaret::pdu_trace
