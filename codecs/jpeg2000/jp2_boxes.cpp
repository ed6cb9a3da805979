#include "jpeg2000/jp2_boxes.h"

#include <cstdint>
#include <cstring>

#include "base/byte_order.h"
#include "failure.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t Type(const char (&name)[5]) {
  std::uint32_t type = 0;
  for (std::size_t at = 0; at < 4; ++at) type = type << 8 | static_cast<std::uint8_t>(name[at]);
  return type;
}

constexpr std::uint8_t kSignature[] = {0, 0, 0, 12, 'j', 'P', ' ', ' '};
constexpr std::uint32_t kCodeStream = Type("jp2c");
constexpr std::uint32_t kHeader = Type("jp2h");
constexpr std::uint32_t kPalette = Type("pclr");

struct Box {
  std::uint32_t type = 0;
  Bytes content;
};

/// Takes the first box off `boxes`.
Box NextBox(Bytes& boxes) {
  if (boxes.size() < 8) Fail("the JP2 file ends before its code stream");
  std::uint64_t length = LoadBig32(boxes.data());
  std::size_t head = 8;
  Box box;
  box.type = LoadBig32(&boxes[4]);
  if (length == 0) length = boxes.size();  // to the end of the file
  if (length == 1) {
    head = 16;
    if (boxes.size() < head) Fail("the JP2 file ends before its code stream");
    length = std::uint64_t{LoadBig32(&boxes[8])} << 32 | LoadBig32(&boxes[12]);
  }
  if (length < head) {
    Fail("a box of %llu bytes in the JP2 file", static_cast<unsigned long long>(length));
  }
  // The code stream tells its end itself, better than some writers' boxes.
  if (length > boxes.size()) {
    if (box.type != kCodeStream) Fail("the JP2 file ends before its code stream");
    length = boxes.size();
  }
  box.content = boxes.subspan(head, static_cast<std::size_t>(length) - head);
  boxes = boxes.subspan(static_cast<std::size_t>(length));
  return box;
}

void RequireNoPalette(Bytes boxes) {
  while (!boxes.empty()) {
    if (NextBox(boxes).type == kPalette) Fail("a palette in the JP2 file is not supported");
  }
}

}  // namespace

Bytes CodeStreamOf(Bytes stream) {
  if (stream.size() < sizeof kSignature ||
      std::memcmp(stream.data(), kSignature, sizeof kSignature) != 0) {
    return stream;
  }
  for (;;) {
    const Box box = NextBox(stream);
    if (box.type == kCodeStream) return box.content;
    if (box.type == kHeader) RequireNoPalette(box.content);
  }
}

}  // namespace tessaret::codecs
