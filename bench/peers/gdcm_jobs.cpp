// GDCM at the jobs of codecs: its image changes its transfer syntax, as its programs do it.
#include <gdcmImageChangeTransferSyntax.h>
#include <gdcmImageReader.h>
#include <gdcmSequenceOfFragments.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "files.h"
#include "measure.h"
#include "peers/peer_jobs.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCompressedStep = 4;
constexpr std::size_t kSumStep = 97;

void Must(bool well, const char* what) {
  if (!well) throw std::runtime_error(std::string("GDCM: ") + what);
}

void Read(gdcm::ImageReader& reader, const fs::path& path) {
  reader.SetFileName(path.c_str());
  Must(reader.Read(), "read");
}

bool IsBytes(const gdcm::Image& image) { return image.GetPixelFormat().GetBitsAllocated() == 8; }

std::uint64_t SumOfSamples(const std::vector<char>& native, bool isBytes) {
  const std::size_t size = isBytes ? 1 : 2;
  std::uint64_t sum = 0;
  for (std::size_t at = 0; at + size <= native.size(); at += kSumStep * size) {
    std::uint16_t sample = 0;
    std::memcpy(&sample, native.data() + at, size);
    sum += sample;
  }
  return sum;
}

/// The image that `one` gets was read outside of the time that it answers.
template <class One>
void MeasureEach(const JobContext& context, std::size_t step, One one) {
  const std::vector<fs::path> files = FilesIn(context.Input(), step);
  gdcm::ImageReader first;
  Read(first, files.front());
  std::uint64_t sum = 0;
  Measure({
      .job = context.job.name,
      .peer = "gdcm",
      .bytes = std::uint64_t{first.GetImage().GetBufferLength()} * files.size(),
      .items = files.size(),
      .repetition =
          [&] {
            double seconds = 0;
            sum = 0;
            for (const fs::path& file : files) {
              gdcm::ImageReader reader;
              Read(reader, file);
              seconds += one(reader.GetImage(), sum);
            }
            return seconds;
          },
      .check = [&] { return static_cast<double>(sum); },
  });
}

void Decode(const JobContext& context) {
  std::vector<char> native;
  MeasureEach(context, 1, [&](const gdcm::Image& image, std::uint64_t& sum) {
    native.resize(image.GetBufferLength());
    const Stopwatch watch;
    Must(image.GetBuffer(native.data()), "decode");
    const double seconds = watch.Seconds();
    sum += SumOfSamples(native, IsBytes(image));
    return seconds;
  });
}

template <gdcm::TransferSyntax::TSType syntax>
void Encode(const JobContext& context) {
  MeasureEach(context, kCompressedStep, [&](const gdcm::Image& image, std::uint64_t& sum) {
    gdcm::ImageChangeTransferSyntax change;
    change.SetTransferSyntax(gdcm::TransferSyntax(syntax));
    change.SetInput(image);
    const Stopwatch watch;
    Must(change.Change(), "encode");
    const double seconds = watch.Seconds();
    const auto* fragments = change.GetOutput().GetDataElement().GetSequenceOfFragments();
    if (fragments == nullptr) throw std::runtime_error("GDCM: no fragments");
    sum += fragments->ComputeByteLength();
    return seconds;
  });
}

constexpr Job kJobs[] = {
    {"codec.rle.decode", Decode, "CTRLE"},
    {"codec.rle.encode", Encode<gdcm::TransferSyntax::RLELossless>, "CT400E"},
    {"codec.jpll.decode", Decode, "CTJPLL"},
    {"codec.jpll.encode", Encode<gdcm::TransferSyntax::JPEGLosslessProcess14_1>, "CT400E"},
    {"codec.jpls.decode", Decode, "CTJPLS"},
    {"codec.jpls.encode", Encode<gdcm::TransferSyntax::JPEGLSLossless>, "CT400E"},
    {"codec.j2k.decode", Decode, "CTJ2K"},
    {"codec.j2k.encode", Encode<gdcm::TransferSyntax::JPEG2000Lossless>, "CT400E"},
    {"codec.jpeg.decode", Decode, "CTJPEG"},
    {"codec.jpegext.decode", Decode, "CTJPEGX"},
};

}  // namespace

std::span<const Job> PeerJobs() { return kJobs; }

}  // namespace tessaret::bench
