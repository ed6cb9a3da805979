#include "jpeg/memory_source.h"

#include <algorithm>
#include <cstddef>

namespace tessaret::codecs {
namespace {

/// The library decodes what is in its hands in great pieces by a quicker way, which takes codes that no table has for zeros. It
/// takes the careful one with less than 512 bytes.
constexpr std::size_t kPiece = 508;

j_common_ptr Common(j_decompress_ptr library) { return reinterpret_cast<j_common_ptr>(library); }

MemorySource& SourceOf(j_decompress_ptr library) {
  return *reinterpret_cast<MemorySource*>(library->src);
}

void OnStart(j_decompress_ptr /*library*/) {}
void OnEnd(j_decompress_ptr /*library*/) {}

[[noreturn]] void EndEarly(j_decompress_ptr library) {
  EndStep(Common(library), "the code stream ends before the image does");
}

boolean Fill(j_decompress_ptr library) {
  MemorySource& source = SourceOf(library);
  if (source.rest.empty()) EndEarly(library);
  const std::size_t size = std::min(kPiece, source.rest.size());
  source.manager.next_input_byte = source.rest.data();
  source.manager.bytes_in_buffer = size;
  source.rest = source.rest.subspan(size);
  return TRUE;
}

void Skip(j_decompress_ptr library, long count) {
  if (count <= 0) return;
  MemorySource& source = SourceOf(library);
  auto left = static_cast<std::size_t>(count);
  const std::size_t here = std::min(left, source.manager.bytes_in_buffer);
  source.manager.next_input_byte += here;
  source.manager.bytes_in_buffer -= here;
  left -= here;
  if (left > source.rest.size()) EndEarly(library);
  source.rest = source.rest.subspan(left);
}

boolean OnLostRestart(j_decompress_ptr library, int expected) {
  static_cast<void>(expected);
  EndStep(Common(library), "a restart marker is not where it should be");
}

}  // namespace

void UseSource(jpeg_decompress_struct& library, MemorySource& source, Bytes stream) {
  source.rest = stream;
  source.manager.init_source = OnStart;
  source.manager.fill_input_buffer = Fill;
  source.manager.skip_input_data = Skip;
  source.manager.resync_to_restart = OnLostRestart;
  source.manager.term_source = OnEnd;
  library.src = &source.manager;
}

}  // namespace tessaret::codecs
