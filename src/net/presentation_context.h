// What an association is proposed for, and what of it is accepted: one abstract syntax with the transfer syntaxes for it
// (DICOM PS3.8, 9.3.2.2 and 9.3.3.2).
#pragma once

#include <cstdint>

#include "net/pdu_items.h"
#include "net/transfer_syntax_list.h"

namespace tessaret {

/// One byte on the wire, so that no association has more with odd identifiers.
inline constexpr std::size_t kMostPresentationContexts = 128;
/// About twice as many as there are.
inline constexpr std::size_t kMostTransferSyntaxes = 128;

/// Item 0x20, of a request.
class PresentationContext {
 public:
  /// Takes an odd identifier from the process's counter.
  PresentationContext();

  std::uint32_t Size();
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);
  /// The first item in it is taken for the abstract syntax and all others for transfer syntaxes, whatever types they state. True
  /// only where they fill the item exactly; more than kMostTransferSyntaxes are refused.
  bool ReadRest(Buffer& buffer, std::uint32_t room = kAnyRoom);

  std::uint8_t ItemType = item_type::kPresentationContext;
  std::uint8_t Reserved1 = 0;
  std::uint16_t Length = 0;
  std::uint8_t PresentationContextID = 0;
  std::uint8_t Reserved2 = 0;
  std::uint8_t Reserved3 = 0;
  std::uint8_t Reserved4 = 0;
  tessaret::AbstractSyntax AbstractSyntax;
  TransferSyntaxList TransferSyntaxes;
};

/// Item 0x21, of an answer.
class PresentationContextAccept {
 public:
  /// Takes an identifier from the process's counter, which the proposal's will replace.
  PresentationContextAccept();

  std::uint32_t Size();
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);
  /// True only where the transfer syntax fills the item exactly.
  bool ReadRest(Buffer& buffer, std::uint32_t room = kAnyRoom);

  std::uint8_t ItemType = item_type::kPresentationContextAccept;
  std::uint8_t Reserved1 = 0;
  std::uint16_t Length = 0;
  std::uint8_t PresentationContextID = 0;
  std::uint8_t Reserved2 = 0;
  std::uint8_t Result = 2;  // 0: accepted
  std::uint8_t Reserved4 = 0;
  tessaret::AbstractSyntax AbstractSyntax;  // what it stands for; never on the wire
  tessaret::TransferSyntax TransferSyntax;
};

}  // namespace tessaret
