// Codecs through the engine: a slice's fragments in memory to native pixels, and back.
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

#include "codec_series.h"
#include "jobs.h"
#include "measure.h"

namespace tessaret::bench {
namespace {

std::uint64_t AllNativeBytes(const std::vector<SeriesImage>& images) {
  std::uint64_t bytes = 0;
  for (const SeriesImage& image : images) bytes += NativeBytes(*image);
  return bytes;
}

const CodecMethod& MethodOf(const JobContext& context) {
  const CodecMethod& method = MethodOfJob(context.job.name);
  if (!HasCodec(method)) throw NotPossible("no codec for " + std::string(method.name));
  return method;
}

std::vector<SeriesImage> LoadCompressed(const JobContext& context) {
  static_cast<void>(MethodOf(context));
  if (!std::filesystem::exists(context.Input())) {
    throw NotPossible("no input in " + context.Input().string());
  }
  return LoadImages(context.Input(), 1);
}

/// One after the other in this thread. Copies are made and given back outside of the time, for converting uses them up.
template <class Convert, class Look>
void MeasureEach(const JobContext& context, const std::vector<SeriesImage>& images, Convert convert,
                 Look look) {
  std::uint64_t sum = 0;
  Measure({
      .job = context.job.name,
      .bytes = AllNativeBytes(images),
      .items = images.size(),
      .repetition =
          [&] {
            double seconds = 0;
            sum = 0;
            for (const SeriesImage& image : images) {
              const SeriesImage copy = CopyOf(*image);
              const Stopwatch watch;
              convert(*copy);
              seconds += watch.Seconds();
              sum += look(*copy);
            }
            return seconds;
          },
      .check = [&] { return static_cast<double>(sum); },
  });
}

void DecodeEach(const JobContext& context) {
  MeasureEach(context, LoadCompressed(context), Decompress, SumOfSamples);
}

void EncodeEach(const JobContext& context) {
  const CodecMethod& method = MethodOf(context);
  const auto images = LoadNativeFor(method, context.Input());
  MeasureEach(
      context, images, [&](DICOMObject& image) { Compress(image, method); }, CompressedBytes);
}

/// Does `one(index)` for all indices, in as many threads as there are cores, whichever is free takes the next. What is thrown comes out.
template <class One>
void InAllThreads(std::size_t count, One one) {
  std::atomic<std::size_t> next = 0;
  std::exception_ptr failure;
  std::mutex failureLock;
  const auto work = [&] {
    try {
      for (std::size_t at = next++; at < count; at = next++) one(at);
    } catch (...) {
      const std::lock_guard lock(failureLock);
      failure = std::current_exception();
    }
  };
  std::vector<std::thread> others;
  for (unsigned at = 1; at < std::thread::hardware_concurrency(); ++at) others.emplace_back(work);
  work();
  for (std::thread& other : others) other.join();
  if (failure) std::rethrow_exception(failure);
}

/// A slice a thread at a time. Each thread sums the pixels up and gives them back before it goes on, as those do that are measured
/// beside this, so that the time is not that of the system handing out fresh memory.
void DecodeAll(const JobContext& context) {
  const std::vector<SeriesImage> images = LoadCompressed(context);
  std::atomic<std::uint64_t> sum = 0;
  Measure({
      .job = context.job.name,
      .bytes = AllNativeBytes(images),
      .items = images.size(),
      .repetition =
          [&] {
            std::vector<SeriesImage> copies;
            copies.reserve(images.size());
            for (const SeriesImage& image : images) copies.push_back(CopyOf(*image));
            sum = 0;
            const Stopwatch watch;
            InAllThreads(copies.size(), [&](std::size_t at) {
              Decompress(*copies[at]);
              sum += SumOfSamples(*copies[at]);
              DropPixels(*copies[at]);
            });
            return watch.Seconds();
          },
      .check = [&] { return static_cast<double>(sum); },
  });
}

constexpr Job kJobs[] = {
    {"codec.rle.decode", DecodeEach, "CTRLE"},       {"codec.rle.decode.all", DecodeAll, "CTRLE"},
    {"codec.rle.encode", EncodeEach, "CT400E"},      {"codec.jpll.decode", DecodeEach, "CTJPLL"},
    {"codec.jpll.decode.all", DecodeAll, "CTJPLL"},  {"codec.jpll.encode", EncodeEach, "CT400E"},
    {"codec.jpls.decode", DecodeEach, "CTJPLS"},     {"codec.jpls.decode.all", DecodeAll, "CTJPLS"},
    {"codec.jpls.encode", EncodeEach, "CT400E"},     {"codec.j2k.decode", DecodeEach, "CTJ2K"},
    {"codec.j2k.decode.all", DecodeAll, "CTJ2K"},    {"codec.j2k.encode", EncodeEach, "CT400E"},
    {"codec.jpeg.decode", DecodeEach, "CTJPEG"},     {"codec.jpeg.encode", EncodeEach, "CT400E"},
    {"codec.jpegext.decode", DecodeEach, "CTJPEGX"}, {"codec.jpegext.encode", EncodeEach, "CT400E"},
};

}  // namespace

std::span<const Job> CodecJobs() { return kJobs; }

}  // namespace tessaret::bench
