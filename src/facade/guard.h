// The edge between the interface and what lies below: nothing that is thrown there gets out as anything but a status with words.
#pragma once

#include <cxxabi.h>

#include <exception>
#include <new>

#include "component/report.h"

namespace tessaret {

/// Does `work`, which answers a Status, for a member of `Interface` of the class `classId`.
template <class Interface, class Work>
Status Guarded(const ClassId& classId, Work work) {
  try {
    return work();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (const std::bad_alloc&) {
    Report(classId, "Not enough memory", Interface::kId);
    return kOutOfMemory;
  } catch (const std::exception& failure) {
    return Report(classId, failure.what(), Interface::kId);
  } catch (...) {
    return Report(classId, "Unknown error", Interface::kId);
  }
}

}  // namespace tessaret
