// DCMTK at the jobs of codecs: its data set changes its representation, as its programs do it.
#include <memory>
#include <stdexcept>
#include <string>

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcpixseq.h>
#include <dcmtk/dcmdata/dcpxitem.h>
#include <dcmtk/dcmdata/dcrledrg.h>
#include <dcmtk/dcmdata/dcrleerg.h>
#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmjpeg/djdecode.h>
#include <dcmtk/dcmjpeg/djencode.h>
#include <dcmtk/dcmjpeg/djrplol.h>
#include <dcmtk/dcmjpeg/djrploss.h>
#include <dcmtk/dcmjpls/djdecode.h>
#include <dcmtk/dcmjpls/djencode.h>
#include <dcmtk/dcmjpls/djrparam.h>
#include <dcmtk/oflog/oflog.h>

#include "files.h"
#include "measure.h"
#include "peers/peer_jobs.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCompressedStep = 4;
constexpr std::size_t kSumStep = 97;
constexpr int kQuality = 90;

void Must(const OFCondition& condition, const char* what) {
  if (condition.bad()) throw std::runtime_error(std::string(what) + ": " + condition.text());
}

void RegisterCodecs() {
  // Its encoders report on each image otherwise.
  OFLog::configure(OFLogger::ERROR_LOG_LEVEL);
  DcmRLEDecoderRegistration::registerCodecs();
  DJDecoderRegistration::registerCodecs();
  DJLSDecoderRegistration::registerCodecs();
  DcmRLEEncoderRegistration::registerCodecs();
  DJEncoderRegistration::registerCodecs();
  DJLSEncoderRegistration::registerCodecs();
}

Uint16 Number(DcmDataset& set, const DcmTagKey& tag) {
  Uint16 number = 0;
  Must(set.findAndGetUint16(tag, number), "sizes");
  return number;
}

std::uint64_t NativeBytes(DcmDataset& set) {
  return std::uint64_t{Number(set, DCM_Rows)} * Number(set, DCM_Columns) *
         (Number(set, DCM_BitsAllocated) / 8u);
}

std::unique_ptr<DcmFileFormat> Load(const fs::path& path) {
  auto file = std::make_unique<DcmFileFormat>();
  Must(file->loadFile(path.c_str()), "load");
  Must(file->loadAllDataIntoMemory(), "load");
  return file;
}

/// Keeps the upper 8 of 12 bits.
void ReduceToBytes(DcmDataset& set) {
  const Uint16* samples = nullptr;
  unsigned long count = 0;
  Must(set.findAndGetUint16Array(DCM_PixelData, samples, &count), "pixels");
  std::vector<Uint8> bytes(count);
  for (std::size_t at = 0; at < count; ++at) bytes[at] = static_cast<Uint8>(samples[at] >> 4);
  auto pixels = std::make_unique<DcmPixelData>(DcmTag(DCM_PixelData, EVR_OB));
  Must(pixels->putUint8Array(bytes.data(), static_cast<unsigned long>(bytes.size())), "pixels");
  Must(set.insert(pixels.release(), OFTrue), "pixels");
  Must(set.putAndInsertUint16(DCM_BitsAllocated, 8), "sizes");
  Must(set.putAndInsertUint16(DCM_BitsStored, 8), "sizes");
  Must(set.putAndInsertUint16(DCM_HighBit, 7), "sizes");
}

std::uint64_t SumOfSamples(DcmDataset& set) {
  std::uint64_t sum = 0;
  unsigned long count = 0;
  if (Number(set, DCM_BitsAllocated) == 8) {
    const Uint8* bytes = nullptr;
    Must(set.findAndGetUint8Array(DCM_PixelData, bytes, &count), "pixels");
    for (std::size_t at = 0; at < count; at += kSumStep) sum += bytes[at];
  } else {
    const Uint16* words = nullptr;
    Must(set.findAndGetUint16Array(DCM_PixelData, words, &count), "pixels");
    for (std::size_t at = 0; at < count; at += kSumStep) sum += words[at];
  }
  return sum;
}

std::uint64_t CompressedBytes(DcmDataset& set, E_TransferSyntax syntax,
                              const DcmRepresentationParameter* parameter) {
  DcmElement* element = nullptr;
  Must(set.findAndGetElement(DCM_PixelData, element), "pixels");
  DcmPixelSequence* fragments = nullptr;
  Must(dynamic_cast<DcmPixelData&>(*element).getEncapsulatedRepresentation(syntax, parameter,
                                                                           fragments),
       "fragments");
  std::uint64_t bytes = 0;
  for (unsigned long at = 1; at < fragments->card(); ++at) {
    DcmPixelItem* fragment = nullptr;
    Must(fragments->getItem(fragment, at), "fragments");
    bytes += fragment->getLength();
  }
  return bytes;
}

/// Each file is loaded outside of the time, as it is what makes the copy that a conversion uses up.
template <class Prepare, class Convert, class Look>
void MeasureEach(const JobContext& context, std::size_t step, Prepare prepare, Convert convert,
                 Look look) {
  RegisterCodecs();
  const std::vector<fs::path> files = FilesIn(context.Input(), step);
  const auto first = Load(files.front());
  prepare(*first->getDataset());
  std::uint64_t sum = 0;
  Measure({
      .job = context.job.name,
      .peer = "dcmtk",
      .bytes = NativeBytes(*first->getDataset()) * files.size(),
      .items = files.size(),
      .repetition =
          [&] {
            double seconds = 0;
            sum = 0;
            for (const fs::path& file : files) {
              const auto image = Load(file);
              prepare(*image->getDataset());
              const Stopwatch watch;
              convert(*image->getDataset());
              seconds += watch.Seconds();
              sum += look(*image->getDataset());
            }
            return seconds;
          },
      .check = [&] { return static_cast<double>(sum); },
  });
}

void Decode(const JobContext& context) {
  MeasureEach(
      context, 1, [](DcmDataset&) {},
      [](DcmDataset& set) {
        Must(set.chooseRepresentation(EXS_LittleEndianExplicit, nullptr), "decode");
      },
      SumOfSamples);
}

void Encode(const JobContext& context, E_TransferSyntax syntax,
            const DcmRepresentationParameter* parameter) {
  MeasureEach(
      context, kCompressedStep,
      [&](DcmDataset& set) {
        if (syntax == EXS_JPEGProcess1) ReduceToBytes(set);
      },
      [&](DcmDataset& set) { Must(set.chooseRepresentation(syntax, parameter), "encode"); },
      [&](DcmDataset& set) { return CompressedBytes(set, syntax, parameter); });
}

void EncodeRle(const JobContext& context) { Encode(context, EXS_RLELossless, nullptr); }

void EncodeJpegLossless(const JobContext& context) {
  const DJ_RPLossless parameter(1, 0);
  Encode(context, EXS_JPEGProcess14SV1, &parameter);
}

void EncodeJpegLs(const JobContext& context) {
  const DJLSRepresentationParameter parameter(0, OFTrue);
  Encode(context, EXS_JPEGLSLossless, &parameter);
}

void EncodeJpeg(const JobContext& context) {
  const DJ_RPLossy parameter(kQuality);
  Encode(context, EXS_JPEGProcess1, &parameter);
}

void EncodeJpegExtended(const JobContext& context) {
  const DJ_RPLossy parameter(kQuality);
  Encode(context, EXS_JPEGProcess2_4, &parameter);
}

constexpr Job kJobs[] = {
    {"codec.rle.decode", Decode, "CTRLE"},
    {"codec.rle.encode", EncodeRle, "CT400E"},
    {"codec.jpll.decode", Decode, "CTJPLL"},
    {"codec.jpll.encode", EncodeJpegLossless, "CT400E"},
    {"codec.jpls.decode", Decode, "CTJPLS"},
    {"codec.jpls.encode", EncodeJpegLs, "CT400E"},
    {"codec.jpeg.decode", Decode, "CTJPEG"},
    {"codec.jpeg.encode", EncodeJpeg, "CT400E"},
    {"codec.jpegext.decode", Decode, "CTJPEGX"},
    {"codec.jpegext.encode", EncodeJpegExtended, "CT400E"},
};

}  // namespace

std::span<const Job> PeerJobs() { return kJobs; }

}  // namespace tessaret::bench
