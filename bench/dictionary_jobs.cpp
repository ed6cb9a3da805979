#include <stdexcept>
#include <string>
#include <vector>

#include "core/module_dictionaries.h"
#include "jobs.h"
#include "measure.h"
#include "synthetic.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

// Enough tags that no branch predictor learns their order, few enough that they stay in the cache.
constexpr std::size_t kTags = 1U << 16;
constexpr std::size_t kPasses = 16;
constexpr std::uint64_t kSeed = 20240102;

std::vector<TagKey> RandomTags() {
  Dice dice(kSeed);
  std::vector<TagKey> tags(kTags);
  for (TagKey& tag : tags) tag = static_cast<TagKey>(dice.Roll());
  return tags;
}

std::vector<TagKey> RandomKnownTags(const RtcTable& table) {
  std::vector<TagKey> tags = RandomTags();
  for (TagKey& tag : tags) tag = table.Keys[tag % table.Count];
  return tags;
}

bool IsKnown(const RTC& dictionary, TagKey tag) {
  return dictionary.RunTimeClass(GroupOf(tag), ElementOf(tag), nullptr) != type_code::kNone;
}

/// Nanoseconds a look-up; the sum is how many tags of a pass were known.
void MeasureLookUps(const std::string& name, const std::vector<TagKey>& tags) {
  const RTC& dictionary = ModuleDictionary();
  std::size_t known = 0;
  Measure({
      .job = name,
      .unit = "ns",
      .items = kTags * kPasses,
      .repetition =
          [&] {
            known = 0;
            const Stopwatch watch;
            for (std::size_t pass = 0; pass < kPasses; ++pass) {
              for (const TagKey tag : tags) {
                if (IsKnown(dictionary, tag)) ++known;
              }
            }
            return watch.Seconds() * 1e9 / static_cast<double>(kTags * kPasses);
          },
      .check = [&] { return static_cast<double>(known) / kPasses; },
  });
}

void LookUp(const JobContext& context) {
  const std::string name(context.job.name);
  MeasureLookUps(name + ".known", RandomKnownTags(*ModuleDictionary().Table));
  MeasureLookUps(name + ".random", RandomTags());
}

/// Loads the dictionary in `path` into a new one; the sum is the number of its entries.
void MeasureLoading(const JobContext& context, const fs::path& path) {
  std::uint32_t entries = 0;
  Measure({
      .job = context.job.name,
      .bytes = fs::file_size(path),
      .repetition =
          [&] {
            RTC dictionary;
            const Stopwatch watch;
            const bool loaded = dictionary.AttachRTC(path.c_str());
            const double seconds = watch.Seconds();
            if (!loaded) throw std::runtime_error(dictionary.LastErrorText());
            entries = dictionary.Table->Count;
            return seconds;
          },
      .check = [&] { return static_cast<double>(entries); },
  });
}

void LoadText(const JobContext& context) {
  MeasureLoading(context, ModuleDirectoryText() + "dicom-dict.txt");
}

void LoadBinary(const JobContext& context) {
  const fs::path path = context.scratch / "tessaret-dictionary";
  if (!ModuleDictionary().SaveBinary(path.c_str())) {
    throw std::runtime_error("cannot write " + path.string());
  }
  MeasureLoading(context, path);
  fs::remove(path);
}

constexpr Job kJobs[] = {
    {"own.dictionary.binary", LoadBinary},
    {"own.dictionary.lookup", LookUp},
    {"own.dictionary.text", LoadText},
};

}  // namespace

std::span<const Job> DictionaryJobs() { return kJobs; }

}  // namespace tessaret::bench
