#include "tessaret/pump.hpp"

#include <new>

#include "component/report.h"
#include "component/thread_queue.h"

namespace tessaret {
namespace {

/// Does `work` with the queue of the calling thread.
template <class Work>
std::int32_t WithQueue(Work work) {
  try {
    const std::shared_ptr<ThreadQueue> queue = ThreadQueue::OfThisThread();
    return queue == nullptr ? Report({}, "No descriptor is left for events", {}) : work(*queue);
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
}

}  // namespace
}  // namespace tessaret

using namespace tessaret;

int32_t tessaret_pump(int32_t timeout_ms) {
  return WithQueue([&](ThreadQueue& queue) { return queue.Pump(timeout_ms); });
}

int32_t tessaret_events_descriptor(void) {
  return WithQueue([](const ThreadQueue& queue) { return queue.Descriptor(); });
}
