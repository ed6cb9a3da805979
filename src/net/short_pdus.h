// The PDUs of ten bytes: refusal, release and abort (DICOM PS3.8, 9.3.4 and 9.3.6 to 9.3.8). Their readers begin behind the type byte.
#pragma once

#include <cstdint>

#include "core/buffer.h"

namespace tessaret {

class AAssociateRJ {
 public:
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);

  std::uint8_t ItemType = 3;
  std::uint8_t Reserved1 = 0;
  std::uint32_t Length = 4;
  std::uint8_t Reserved2 = 0;
  std::uint8_t Result = 1;
  std::uint8_t Source = 3;
  std::uint8_t Reason = 1;
};

/// A request for release and the answer to it.
class ReleasePdu {
 public:
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);

  std::uint8_t ItemType;
  std::uint8_t Reserved1 = 0;
  std::uint32_t Length = 4;
  std::uint32_t Reserved2 = 0;

 protected:
  explicit ReleasePdu(std::uint8_t type) : ItemType(type) {}
};

class AReleaseRQ : public ReleasePdu {
 public:
  AReleaseRQ() : ReleasePdu(5) {}
};

class AReleaseRP : public ReleasePdu {
 public:
  AReleaseRP() : ReleasePdu(6) {}
};

class AAbortRQ {
 public:
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);

  std::uint8_t ItemType = 7;
  std::uint8_t Reserved1 = 0;
  std::uint32_t Length = 4;
  std::uint8_t Reserved2 = 0;
  std::uint8_t Reserved3 = 0;
  // No value of the standard for the source of an abort. Every abort of this library carries it, and is known by it.
  std::uint8_t Source = 3;
  std::uint8_t Reason = 1;
};

}  // namespace tessaret
