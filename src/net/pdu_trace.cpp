#include "net/pdu_trace.h"

#include <string>

#include "core/dump.h"

namespace tessaret::pdu_trace {
namespace {

constexpr char kTabs[] = "\t\t\t\t\t\t";

const char* Tabs(int count) { return kTabs + (sizeof kTabs - 1) - static_cast<unsigned>(count); }

}  // namespace

void Start(bool isReading, const char* name, std::uint8_t type) {
  DumpTrace(kDumpPdu, "%s %s Type=%2.2X\n", isReading ? "Reading" : "Writing", name, type);
}

void Field(int tabs, const char* name, int bytes, std::uint32_t value) {
  DumpTrace(kDumpPdu, "%s%s [%d]=%X\n", Tabs(tabs), name, bytes, value);
}

void Field(int tabs, const char* name, std::span<const std::uint8_t> bytes) {
  if (!IsDumping(kDumpPdu)) return;
  DumpTrace(kDumpPdu, "%s%s [%d]=\n", Tabs(tabs), name, static_cast<int>(bytes.size()));
  DumpHex(bytes.data(), bytes.size());
}

void Field(int tabs, const char* name, std::string_view value) {
  DumpTrace(kDumpPdu, "%s%s=[%.*s]\n", Tabs(tabs), name, static_cast<int>(value.size()),
            value.data());
}

void Head(int tabs, std::uint8_t reserved, std::uint16_t length) {
  Field(tabs, "Reserved", 1, reserved);
  Field(tabs, "Length", 2, length);
}

void PduHead(std::uint8_t reserved, std::uint32_t length) {
  Field(1, "Reserved", 1, reserved);
  Field(1, "Length", 4, length);
}

}  // namespace tessaret::pdu_trace
