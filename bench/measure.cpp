#include "measure.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace tessaret::bench {
namespace {

constexpr double kUsualRepetitions = 3;
constexpr double kUsualBudget = 6;  // seconds

double FromEnvironment(const char* name, double otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtod(text, nullptr);
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

/// Processor time of this process so far.
double ProcessorSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

/// The largest resident size so far. Unlike ru_maxrss it leaves out the process that this one was forked from.
long PeakKib() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kib = 0;
    if (word == "VmHWM:" && status >> kib) return kib;
  }
  return 0;
}

std::vector<double> TakeSamples(const std::function<double()>& repetition) {
  const double wanted = FromEnvironment("BENCH_REPS", kUsualRepetitions);
  const double budget = FromEnvironment("BENCH_BUDGET", kUsualBudget);
  const Stopwatch watch;
  std::vector<double> samples;
  const double warmUp = repetition();
  if (watch.Seconds() > budget / 4) samples.push_back(warmUp);
  const auto goesOn = [&] {
    return static_cast<double>(samples.size()) < wanted && watch.Seconds() < budget;
  };
  while (samples.empty() || goesOn()) samples.push_back(repetition());
  return samples;
}

void PrintText(const char* key, std::string_view text) {
  std::printf("\"%s\":\"%.*s\",", key, static_cast<int>(text.size()), text.data());
}

void PrintSamples(const std::vector<double>& samples) {
  const char* separator = "\"samples\":[";
  for (const double sample : samples) {
    std::printf("%s%.9g", separator, sample);
    separator = ",";
  }
  std::printf("],");
}

}  // namespace

void Measure(const Measurement& measurement) {
  const Stopwatch watch;
  const double processorBefore = ProcessorSeconds();
  const std::vector<double> samples = TakeSamples(measurement.repetition);
  const double processor = ProcessorSeconds() - processorBefore;
  const double wall = std::max(watch.Seconds(), 1e-9);

  std::printf("{");
  PrintText("peer", measurement.peer);
  PrintText("job", measurement.job);
  PrintText("unit", measurement.unit);
  std::printf("\"bytes\":%llu,\"items\":%llu,", static_cast<unsigned long long>(measurement.bytes),
              static_cast<unsigned long long>(measurement.items));
  PrintSamples(samples);
  std::printf("\"peak_kib\":%ld,\"cpu_per_wall\":%.3f", PeakKib(), processor / wall);
  if (measurement.check) std::printf(",\"check\":%.17g", measurement.check());
  std::printf("}\n");
}

}  // namespace tessaret::bench
