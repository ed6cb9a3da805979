#include "jpeg/memory_source.h"

#include <cstddef>

namespace tessaret::codecs {
namespace {

j_common_ptr Common(j_decompress_ptr library) { return reinterpret_cast<j_common_ptr>(library); }

void OnStart(j_decompress_ptr /*library*/) {}
void OnEnd(j_decompress_ptr /*library*/) {}

[[noreturn]] void EndEarly(j_decompress_ptr library) {
  EndStep(Common(library), "the code stream ends before the image does");
}

/// All was in its hands from the begin.
boolean OnEmpty(j_decompress_ptr library) { EndEarly(library); }

void Skip(j_decompress_ptr library, long count) {
  if (count <= 0) return;
  const auto size = static_cast<std::size_t>(count);
  if (size > library->src->bytes_in_buffer) EndEarly(library);
  library->src->next_input_byte += size;
  library->src->bytes_in_buffer -= size;
}

boolean OnLostRestart(j_decompress_ptr library, int expected) {
  static_cast<void>(expected);
  EndStep(Common(library), "a restart marker is not where it should be");
}

}  // namespace

void UseSource(jpeg_decompress_struct& library, jpeg_source_mgr& source, Bytes stream) {
  source.next_input_byte = stream.data();
  source.bytes_in_buffer = stream.size();
  source.init_source = OnStart;
  source.fill_input_buffer = OnEmpty;
  source.skip_input_data = Skip;
  source.resync_to_restart = OnLostRestart;
  source.term_source = OnEnd;
  library.src = &source;
}

}  // namespace tessaret::codecs
