// Work whose exceptions end where it was asked for, such as calls into what a host has put in place of a provider's hooks.
#pragma once

#include <cxxabi.h>

namespace tessaret {

/// What `work` answers, or `otherwise` where it throws: the association goes on, and a peer can be told of a failure.
template <class Answer, class Work>
Answer Contained(Answer otherwise, Work work) {
  try {
    return work();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (...) {
    return otherwise;
  }
}

}  // namespace tessaret
