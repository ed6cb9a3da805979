#include "jpeg/vector_destination.h"

#include <cstddef>
#include <new>

namespace tessaret::codecs {
namespace {

VectorDestination& DestinationOf(j_compress_ptr library) {
  return *reinterpret_cast<VectorDestination*>(library->dest);
}

void OnStart(j_compress_ptr library) {
  VectorDestination& destination = DestinationOf(library);
  destination.manager.next_output_byte = destination.piece.data();
  destination.manager.free_in_buffer = destination.piece.size();
}

bool Append(VectorDestination& destination, std::size_t count) {
  try {
    destination.stream.insert(destination.stream.end(), destination.piece.data(),
                              destination.piece.data() + count);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void AppendOrEnd(j_compress_ptr library, std::size_t count) {
  if (!Append(DestinationOf(library), count)) {
    EndStep(reinterpret_cast<j_common_ptr>(library), JERR_OUT_OF_MEMORY);
  }
}

boolean OnFull(j_compress_ptr library) {
  AppendOrEnd(library, DestinationOf(library).piece.size());
  OnStart(library);
  return TRUE;
}

void OnEnd(j_compress_ptr library) {
  const VectorDestination& destination = DestinationOf(library);
  AppendOrEnd(library, destination.piece.size() - destination.manager.free_in_buffer);
}

}  // namespace

void UseDestination(jpeg_compress_struct& library, VectorDestination& destination) {
  destination.manager.init_destination = OnStart;
  destination.manager.empty_output_buffer = OnFull;
  destination.manager.term_destination = OnEnd;
  library.dest = &destination.manager;
}

}  // namespace tessaret::codecs
