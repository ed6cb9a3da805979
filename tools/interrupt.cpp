#include "interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>

#include <tessaret/tessaret.hpp>

#include "platform/file_calls.h"

namespace tessaret::tool {
namespace {

std::atomic<int> signalMet = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may use nothing else");

ExitCode CodeOf(int signal) {
  return signal == SIGINT ? ExitCode::kInterrupted : ExitCode::kTerminated;
}

void OnInterrupt(int signal) {
  if (signalMet.exchange(signal) != 0) ::_exit(static_cast<int>(CodeOf(signal)));
  // Of the library, and of the tool itself.
  CancelFiles(true);
  CancelFileCalls(true);
  ::alarm(1);
}

// A signal that comes just before a system call does not break it: an alarm a second does, until the call is given up.
void OnAlarm(int) { ::alarm(1); }

void Handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  ::sigemptyset(&action.sa_mask);
  ::sigaction(signal, &action, nullptr);
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void WatchForInterrupts() {
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  Handle(SIGALRM, &OnAlarm);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // Whoever started the tool with the signal ignored, as a shell does for work in the background, meant that.
    if (!IsIgnored(signal)) Handle(signal, &OnInterrupt);
  }
}

bool IsInterrupted() { return signalMet.load(std::memory_order_relaxed) != 0; }

ExitCode InterruptExitCode() { return CodeOf(signalMet.load()); }

}  // namespace tessaret::tool
