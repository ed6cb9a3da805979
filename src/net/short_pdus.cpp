#include "net/short_pdus.h"

#include "core/trace.h"
#include "net/pdu_trace.h"

namespace tessaret {
namespace {

constexpr std::uint32_t kOwnBytes = 4;

/// A length of anything but these four bytes is a lie, and what follows could not be found.
bool ReadLength(Buffer& buffer, std::uint8_t& reserved, std::uint32_t& length) {
  return buffer.Read8(&reserved) && buffer.Read32(&length) && length == kOwnBytes;
}

void Trace(const AAssociateRJ& pdu, bool isReading) {
  pdu_trace::Start(isReading, "AAssociateRJ (0x03)", pdu.ItemType);
  pdu_trace::PduHead(pdu.Reserved1, pdu.Length);
  pdu_trace::Field(1, "Reserved", 1, pdu.Reserved2);
  pdu_trace::Field(1, "Result", 1, pdu.Result);
  pdu_trace::Field(1, "Source", 1, pdu.Source);
  pdu_trace::Field(1, "Reason", 1, pdu.Reason);
}

void Trace(const ReleasePdu& pdu, const char* verb) {
  DumpTrace(kDumpData, "%s %s Type=%2.2X\n", verb,
            pdu.ItemType == 5 ? "AReleaseRQ (0x05)" : "AReleaseRP (0x06)", pdu.ItemType);
  pdu_trace::PduHead(pdu.Reserved1, pdu.Length);
  pdu_trace::Field(1, "Reserved", 4, pdu.Reserved2);
}

void TraceFields(const AAbortRQ& pdu) {
  pdu_trace::PduHead(pdu.Reserved1, pdu.Length);
  pdu_trace::Field(1, "Reserved", 1, pdu.Reserved2);
  pdu_trace::Field(1, "Reserved", 1, pdu.Reserved3);
  pdu_trace::Field(1, "Source", 1, pdu.Source);
  pdu_trace::Field(1, "Reason", 1, pdu.Reason);
}

}  // namespace

bool AAssociateRJ::Write(Buffer& buffer) {
  Length = kOwnBytes;
  Trace(*this, false);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write32(Length) &&
         buffer.Write8(Reserved2) && buffer.Write8(Result) && buffer.Write8(Source) &&
         buffer.Write8(Reason) && buffer.Flush();
}

bool AAssociateRJ::Read(Buffer& buffer) {
  if (!ReadLength(buffer, Reserved1, Length) || !buffer.Read8(&Reserved2) ||
      !buffer.Read8(&Result) || !buffer.Read8(&Source) || !buffer.Read8(&Reason)) {
    return false;
  }
  Trace(*this, true);
  return true;
}

bool ReleasePdu::Write(Buffer& buffer) {
  Length = kOwnBytes;
  Trace(*this, "Writing");
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write32(Length) &&
         buffer.Write32(Reserved2) && buffer.Flush();
}

bool ReleasePdu::Read(Buffer& buffer) {
  if (!ReadLength(buffer, Reserved1, Length) || !buffer.Read32(&Reserved2)) return false;
  Trace(*this, "Reading");
  return true;
}

bool AAbortRQ::Write(Buffer& buffer) {
  Length = kOwnBytes;
  DumpTrace(kDumpData, "Writing AAbortRQ (0x07) Type=%2.2X\n", ItemType);
  TraceFields(*this);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write32(Length) &&
         buffer.Write8(Reserved2) && buffer.Write8(Reserved3) && buffer.Write8(Source) &&
         buffer.Write8(Reason) && buffer.Flush();
}

bool AAbortRQ::Read(Buffer& buffer) {
  if (!ReadLength(buffer, Reserved1, Length) || !buffer.Read8(&Reserved2) ||
      !buffer.Read8(&Reserved3) || !buffer.Read8(&Source) || !buffer.Read8(&Reason)) {
    return false;
  }
  DumpTrace(kDumpData, "%s", "Reading AAbortRQ (0x07) Type=02.2X\n");
  TraceFields(*this);
  return true;
}

}  // namespace tessaret
