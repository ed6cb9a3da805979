// The jobs of the files. What lies inside and outside of the time is the same as in the programs that these figures are held
// against: the caller of a library that has a path and wants an object, or the other way round.
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/text.h"
#include "core/data_set_coder.h"
#include "core/module_dictionaries.h"
#include "files.h"
#include "jobs.h"
#include "measure.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

using Object = std::unique_ptr<DICOMDataObject>;

constexpr std::uint16_t kMetaGroup = 0x0002;

[[noreturn]] void Fail(const char* what, const fs::path& path, const DataSetCoder& coder) {
  const char* why = coder.ErrorText();
  throw std::runtime_error(std::string(what) + " " + path.string() + ": " +
                           (why != nullptr ? why : "failed"));
}

Object Load(const fs::path& path, bool pixels) {
  DataSetCoder coder(&ModuleDictionary());
  Object object = coder.LoadFile(path.c_str(), pixels, false);
  const ParseStop::Why why = coder.LastStop().why;
  const bool complete =
      why == ParseStop::Why::kNone || (!pixels && why == ParseStop::Why::kPixelData);
  if (!object || !complete) Fail("loading", path, coder);
  return object;
}

void Save(const DICOMObject& object, const fs::path& path) {
  DataSetCoder coder(&ModuleDictionary());
  if (!coder.SaveKeeping(path.c_str(), 3, object)) Fail("saving", path, coder);
}

/// Elements that hold a value or a sequence, at all levels. Pixel data counts where its bytes were asked for.
std::uint64_t CountElements(const DICOMObject& object, bool pixels) {
  std::uint64_t count = 0;
  object.Elements.ForEach([&](const VR& vr) {
    const bool pixelData = vr.Key() == kPixelDataTag;
    if (vr.Group == kMetaGroup || (pixelData && !pixels)) return;
    ++count;
    if (vr.Items == nullptr || pixelData) return;
    for (const auto* node = vr.Items->First; node != nullptr; node = node->next) {
      count += CountElements(*node->value, pixels);
    }
  });
  return count;
}

void LoadOne(const JobContext& context, bool pixels) {
  const fs::path path = context.Input();
  std::uint64_t count = 0;
  Measure({
      .job = context.job.name,
      .bytes = fs::file_size(path),
      .repetition =
          [&] {
            const Stopwatch watch;
            const Object object = Load(path, pixels);
            const double seconds = watch.Seconds();
            if (count == 0) count = CountElements(*object, pixels);
            return seconds;
          },
      .check = [&] { return static_cast<double>(count); },
  });
}

void LoadWhole(const JobContext& context) { LoadOne(context, true); }
void LoadHeader(const JobContext& context) { LoadOne(context, false); }

std::string InstanceUid(const DICOMObject& object) {
  const VR* vr = object.GetVR(0x0008, 0x0018);
  if (vr == nullptr || vr->Data == nullptr) return {};
  return std::string(Trimmed({reinterpret_cast<const char*>(vr->Data), vr->Length}));
}

std::uint64_t SizeOf(const std::vector<fs::path>& files) {
  std::uint64_t size = 0;
  for (const fs::path& file : files) size += fs::file_size(file);
  return size;
}

/// File after file: loaded, asked for its UID, freed. The sum is that of the lengths of the UIDs.
void LoadEach(const JobContext& context, bool pixels) {
  const std::vector<fs::path> files = FilesIn(context.Input());
  std::uint64_t letters = 0;
  Measure({
      .job = context.job.name,
      .bytes = SizeOf(files),
      .items = files.size(),
      .repetition =
          [&] {
            letters = 0;
            const Stopwatch watch;
            for (const fs::path& file : files) letters += InstanceUid(*Load(file, pixels)).size();
            return watch.Seconds();
          },
      .check = [&] { return static_cast<double>(letters); },
  });
}

void LoadEachWhole(const JobContext& context) { LoadEach(context, true); }
void LoadEachHeader(const JobContext& context) { LoadEach(context, false); }

void Free(const JobContext& context) {
  const fs::path path = context.Input();
  Measure({
      .job = context.job.name,
      .bytes = fs::file_size(path),
      .repetition =
          [&] {
            Object object = Load(path, true);
            const Stopwatch watch;
            object.reset();
            return watch.Seconds();
          },
  });
}

/// Measures `write`, which is given the path of a file that is not there; the sum is the size of what it wrote.
template <class Write>
void MeasureWriting(const JobContext& context, Write write) {
  const fs::path path = context.scratch / "tessaret-written";
  Measure({
      .job = context.job.name,
      .bytes = fs::file_size(context.Input()),
      .repetition =
          [&] {
            fs::remove(path);
            return write(path);
          },
      .check = [&] { return static_cast<double>(fs::file_size(path)); },
  });
  fs::remove(path);
}

void SaveOnly(const JobContext& context) {
  const Object object = Load(context.Input(), true);
  MeasureWriting(context, [&](const fs::path& path) {
    const Stopwatch watch;
    Save(*object, path);
    return watch.Seconds();
  });
}

void RoundTrip(const JobContext& context) {
  const fs::path input = context.Input();
  MeasureWriting(context, [&](const fs::path& path) {
    const Stopwatch watch;
    const Object object = Load(input, true);
    Save(*object, path);
    return watch.Seconds();
  });
}

constexpr Job kJobs[] = {
    {"io.big.header", LoadHeader, "BIG"},
    {"io.big.load", LoadWhole, "BIG"},
    {"io.big.roundtrip", RoundTrip, "BIG"},
    {"io.big.save", SaveOnly, "BIG"},
    {"io.ct400e.header", LoadEachHeader, "CT400E"},
    {"io.ct400e.load", LoadEachWhole, "CT400E"},
    {"io.ct400i.header", LoadEachHeader, "CT400I"},
    {"io.ct400i.load", LoadEachWhole, "CT400I"},
    {"io.manyd.free", Free, "MANYD"},
    {"io.manyd.load", LoadWhole, "MANYD"},
    {"io.manyd.roundtrip", RoundTrip, "MANYD"},
    {"io.manyd.save", SaveOnly, "MANYD"},
    {"io.manye.free", Free, "MANYE"},
    {"io.manye.load", LoadWhole, "MANYE"},
    {"io.manye.roundtrip", RoundTrip, "MANYE"},
    {"io.manye.save", SaveOnly, "MANYE"},
    {"io.manyi.free", Free, "MANYI"},
    {"io.manyi.load", LoadWhole, "MANYI"},
    {"io.manyi.roundtrip", RoundTrip, "MANYI"},
    {"io.manyi.save", SaveOnly, "MANYI"},
    {"io.tiny.header", LoadEachHeader, "TINY"},
    {"io.tiny.load", LoadEachWhole, "TINY"},
};

}  // namespace

std::span<const Job> IoJobs() { return kJobs; }

}  // namespace tessaret::bench
