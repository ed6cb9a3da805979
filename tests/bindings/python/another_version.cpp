// A library with the functions of Tessaret and a version that is still far away: what the Python package has to refuse.
#include <cstdint>

#include "tessaret/tessaret.h"

extern "C" {

const char* tessaret_version(void) { return "10.2.3"; }

std::int32_t tessaret_create(const char*, tessaret_object**) { return -1; }
void tessaret_retain(tessaret_object*) {}
void tessaret_release(tessaret_object*) {}
const tessaret_interface_info* tessaret_describe(tessaret_object*) { return nullptr; }
const tessaret_interface_info* tessaret_describe_events(tessaret_object*) { return nullptr; }
std::int32_t tessaret_call(tessaret_object*, std::int32_t, tessaret_value*, std::uint32_t,
                           tessaret_value*) {
  return -1;
}
std::int32_t tessaret_advise(tessaret_object*, tessaret_event, void*, std::uint32_t*) { return -1; }
std::int32_t tessaret_unadvise(tessaret_object*, std::uint32_t) { return -1; }
void tessaret_clear(tessaret_value*) {}
const char* tessaret_last_error_text(void) { return ""; }
const char* tessaret_last_error_source(void) { return ""; }
std::int32_t tessaret_can_unload(void) { return 1; }

}  // extern "C"
