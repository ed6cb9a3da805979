// The public interface: what making objects, reading their elements and working in several threads costs.
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "jobs.h"
#include "measure.h"
#include "tessaret/tessaret.hpp"

namespace tessaret::bench {
namespace {

constexpr std::uint32_t kReads = 4'000'000;
constexpr std::uint32_t kReadsByName = 1'000'000;
constexpr std::uint32_t kObjects = 500'000;
constexpr std::uint32_t kLoadsAThread = 5'000;

struct Tag {
  std::int32_t group;
  std::int32_t element;
};
constexpr Tag kRows{0x0028, 0x0010};
constexpr Tag kPatientName{0x0010, 0x0010};

/// The first slice of the series.
std::filesystem::path FirstFile(const std::filesystem::path& folder) {
  std::filesystem::path first;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (first.empty() || entry.path() < first) first = entry.path();
  return first;
}

Ref<IDCMObject> NewObject() {
  Ref<IDCMObject> object = Create<IDCMObject>("Tessaret.DCMObject");
  if (!object) throw std::runtime_error(LastError().text);
  return object;
}

Ref<IDCMObject> Loaded(const std::filesystem::path& path, bool pixels) {
  Ref<IDCMObject> object = NewObject();
  if (Failed(object->Load(path.string(), pixels))) throw std::runtime_error(LastError().text);
  return object;
}

/// Runs `one` for `count` times and tells nanoseconds each.
template <class One>
void MeasureEach(const std::string& name, std::uint32_t count, One one) {
  Measure({
      .job = name,
      .unit = "ns",
      .items = count,
      .repetition =
          [&] {
            const Stopwatch watch;
            for (std::uint32_t at = 0; at < count; ++at) one(at);
            return watch.Seconds() * 1e9 / count;
          },
  });
}

/// By number: alternating between two elements, so that none is the one found last, and staying at one.
void ReadByNumber(const JobContext& context) {
  const Ref<IDCMObject> object = Loaded(FirstFile(context.Input()), false);
  const std::string name(context.job.name);
  const Variant none{};
  Variant value;
  const auto read = [&](Tag tag) { object->get_VR(tag.group, tag.element, none, 0, &value); };
  MeasureEach(name + ".us", kReads, [&](std::uint32_t) { read(kRows); });
  MeasureEach(name + ".pn", kReads, [&](std::uint32_t) { read(kPatientName); });
  MeasureEach(name + ".both", kReads,
              [&](std::uint32_t at) { read((at & 1) != 0 ? kRows : kPatientName); });
}

/// Through the C interface, with the number of the member kept.
void ReadByName(const JobContext& context) {
  tessaret_object* object = nullptr;
  if (tessaret_create("Tessaret.DCMObject", &object) < 0)
    throw std::runtime_error(tessaret_last_error_text());
  const std::string path = FirstFile(context.Input()).string();
  tessaret_value load[2] = {};
  load[0].type = TESSARET_STRING;
  load[0].as.string_value = path.c_str();
  load[1].type = TESSARET_BOOL;
  std::int32_t member = 0;
  if (tessaret_invoke(object, "Load", TESSARET_METHOD, load, 2, nullptr) < 0 ||
      tessaret_find(object, "VR", TESSARET_GET, &member) < 0)
    throw std::runtime_error(tessaret_last_error_text());
  const std::string name(context.job.name);
  const auto read = [&](Tag tag) {
    tessaret_value arguments[2] = {};
    tessaret_value value;
    arguments[0].type = arguments[1].type = TESSARET_LONG;
    arguments[0].as.long_value = tag.group;
    arguments[1].as.long_value = tag.element;
    tessaret_call(object, member, arguments, 2, &value);
    tessaret_clear(&value);
  };
  MeasureEach(name + ".us", kReadsByName, [&](std::uint32_t) { read(kRows); });
  MeasureEach(name + ".pn", kReadsByName, [&](std::uint32_t) { read(kPatientName); });
  tessaret_release(object);
}

void CreateAndRelease(const JobContext& context) {
  NewObject();
  MeasureEach(std::string(context.job.name), kObjects, [](std::uint32_t) { NewObject(); });
}

/// Files that all threads together load, each into an object of its own, in a second.
void LoadInThreads(const JobContext& context) {
  const std::filesystem::path path = FirstFile(context.Input());
  NewObject();
  for (const unsigned threads : {1u, 2u, 8u}) {
    Measure({
        .job = std::string(context.job.name) + "." + std::to_string(threads),
        .unit = "ns",
        .items = std::uint64_t{threads} * kLoadsAThread,
        .repetition =
            [&] {
              const Stopwatch watch;
              std::vector<std::thread> workers;
              for (unsigned at = 0; at < threads; ++at) {
                workers.emplace_back([&path] {
                  for (std::uint32_t load = 0; load < kLoadsAThread; ++load) Loaded(path, true);
                });
              }
              for (std::thread& worker : workers) worker.join();
              return watch.Seconds() * 1e9 / (threads * kLoadsAThread);
            },
    });
  }
}

constexpr Job kJobs[] = {
    {"own.object.create", CreateAndRelease},
    {"own.object.get", ReadByNumber, "CT400E"},
    {"own.object.getbyname", ReadByName, "CT400E"},
    {"own.object.threads", LoadInThreads, "CT400E"},
};

}  // namespace

std::span<const Job> ObjectJobs() { return kJobs; }

}  // namespace tessaret::bench
