#include "net/pdu_trace.h"

#include <string>

namespace tessaret::pdu_trace {
namespace {

constexpr char kTabs[] = "\t\t\t\t\t\t";

const char* Tabs(int count) { return kTabs + (sizeof kTabs - 1) - static_cast<unsigned>(count); }

}  // namespace

void Field(int tabs, const char* name, int bytes, std::uint32_t value) {
  DumpTrace(kDumpPdu, "%s%s [%d]=%X\n", Tabs(tabs), name, bytes, value);
}

void Field(int tabs, const char* name, std::string_view value) {
  DumpTrace(kDumpPdu, "%s%s=[%.*s]\n", Tabs(tabs), name, static_cast<int>(value.size()),
            value.data());
}

void Start(bool isReading, int tabs, const char* name, std::uint8_t type) {
  DumpTrace(kDumpPdu, "%s%s %s Type=%2.2X\n", Tabs(tabs), isReading ? "Reading" : "Writing", name,
            type);
}

}  // namespace tessaret::pdu_trace
