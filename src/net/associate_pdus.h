// The two PDUs that negotiate an association (DICOM PS3.8, 9.3.2 and 9.3.3), which differ in their presentation contexts only. Their
// readers begin behind the type byte, which tells the caller what to read.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "net/presentation_context.h"
#include "net/user_information.h"

namespace tessaret {

/// A longer one is not read. All contexts that there can be, with all transfer syntaxes each, take less.
inline constexpr std::uint32_t kMostAssociateBytes = std::uint32_t{4} << 20;

/// 16 bytes, filled up with blanks, and a terminator of our own.
using ApTitle = std::array<char, 17>;
inline constexpr std::size_t kApTitleBytes = 16;
/// What is longer than 16 bytes is cut.
ApTitle MakeApTitle(std::string_view text);

/// What both begin with and end with.
class AssociatePdu {
 public:
  std::uint8_t ItemType;
  std::uint8_t Reserved1 = 0;
  std::uint32_t Length = 0;
  std::uint16_t ProtocolVersion = 1;
  std::uint16_t Reserved2 = 0;
  ApTitle CalledApTitle = MakeApTitle({});
  ApTitle CallingApTitle = MakeApTitle({});
  std::array<std::uint8_t, 32> Reserved3{};
  tessaret::ApplicationContext ApplicationContext{"1.2.840.10008.3.1.1.1"};
  tessaret::UserInformation UserInformation;

 protected:
  explicit AssociatePdu(std::uint8_t type) : ItemType(type) {}

  /// Everything in front of the items; the readers of both do the same up to there.
  bool ReadHead(Buffer& buffer);
  bool WriteHead(Buffer& buffer) const;
  /// The size of all that is not a presentation context.
  std::uint32_t SizeWithoutContexts();
};

/// The request.
class AAssociateRQ : public AssociatePdu {
 public:
  AAssociateRQ() : AssociatePdu(1) {}

  /// The context is given another odd identifier where its own is taken here already. 1; 0, and nothing changes, where there are as
  /// many as there can be.
  int AddPresentationContext(PresentationContext context);

  /// Computes all lengths and answers with the whole PDU's size.
  std::uint32_t Size();
  /// False where an item is longer than its length can say.
  bool IsWritable();
  /// Gathers the PDU in the stream and flushes it. False with nothing gathered where an item is longer than its length can say.
  bool Write(Buffer& buffer);
  /// False where the items do not fill the PDU exactly, and where anything in it cannot be. Lists grow: empty them before. An item of
  /// unknown type is skipped as if its length had four bytes, which overwrites Reserved1 and Length. The PDU is read to its end all the
  /// same, unless its length cannot be.
  bool Read(Buffer& buffer);

  std::vector<PresentationContext> PresentationContexts;
};

/// The answer that accepts.
class AAssociateAC : public AssociatePdu {
 public:
  AAssociateAC() : AssociatePdu(2) {}

  std::uint32_t Size();
  bool Write(Buffer& buffer);
  /// As that of the request, but an item of unknown type ends it: the rest of the PDU is swallowed, and the answer is false. User
  /// information counts for what is kept of it, so that the answer is false also where something in that is missing or was dropped.
  bool Read(Buffer& buffer);

  std::vector<PresentationContextAccept> PresentationContexts;
};

}  // namespace tessaret
