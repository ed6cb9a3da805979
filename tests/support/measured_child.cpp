#include "support/measured_child.h"

#include <sys/mman.h>
#include <sys/resource.h>

#include <fstream>
#include <stdexcept>
#include <string>

#include "support/child_process.h"

namespace tessaret::test {
namespace {

/// A line of /proc/self/status that counts KiB, in bytes.
std::uint64_t StatusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    std::uint64_t kibibytes = 0;
    if (word == name + ":" && status >> kibibytes) return kibibytes * 1024;
  }
  return 0;
}

double ProcessorSeconds() {
  struct rusage usage {};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

}  // namespace

Measured RunMeasured(const std::function<int()>& work) {
  // A page that both processes see.
  void* page =
      ::mmap(nullptr, sizeof(Measured), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) throw std::runtime_error("no page to share");
  auto* shared = static_cast<Measured*>(page);
  const int result = RunInChild([&] {
    // The peak of a child starts with what it has of its parent.
    const std::uint64_t before = StatusBytes("VmRSS");
    const double start = ProcessorSeconds();
    const int answer = work();
    shared->seconds = ProcessorSeconds() - start;
    const std::uint64_t peak = StatusBytes("VmHWM");
    shared->peakGrowth = peak > before ? peak - before : 0;
    return answer;
  });
  Measured measured = *shared;
  measured.result = result;
  ::munmap(page, sizeof(Measured));
  return measured;
}

}  // namespace tessaret::test
