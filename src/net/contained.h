// Calls into what a host has put in place of a provider's hooks.
#pragma once

#include <cxxabi.h>

namespace tessaret {

/// What `work` answers, or `otherwise` where it throws: the peer is to hear of a failure, and the association goes on.
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
