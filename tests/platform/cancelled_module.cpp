// A library that lets a cancelled thread end while it is loaded and unloaded, as any that opens a file there does.
#include <pthread.h>

namespace {

[[gnu::constructor]] void Begin() { ::pthread_testcancel(); }
[[gnu::destructor]] void End() { ::pthread_testcancel(); }

}  // namespace
