// CharLS and OpenJPEG called directly at the jobs of codecs, from and to plain memory, without a data set around them.
#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include <charls/charls.h>

#include "codec_series.h"
#include "measure.h"
#include "peers/peer_jobs.h"

namespace tessaret::bench {
namespace {

/// One gray image of 12 bits in memory.
struct PlainImage {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  std::vector<std::uint16_t> samples;
};

constexpr std::uint32_t kPrecision = 12;

PlainImage PlainImageOf(const DICOMObject& image) {
  PlainImage plain{image.GetUINT16(0x0028, 0x0011), image.GetUINT16(0x0028, 0x0010), {}};
  const VR* pixels = image.GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
  plain.samples.resize(std::size_t{plain.columns} * plain.rows);
  if (pixels == nullptr || pixels->Length < plain.samples.size() * 2) {
    throw std::runtime_error("an image without its pixels");
  }
  std::memcpy(plain.samples.data(), pixels->Data, plain.samples.size() * 2);
  return plain;
}

std::uint64_t EncodeByCharls(const PlainImage& image) {
  charls::jpegls_encoder encoder;
  encoder.frame_info({image.columns, image.rows, kPrecision, 1});
  std::vector<std::uint8_t> stream(encoder.estimated_destination_size());
  encoder.destination(stream);
  return encoder.encode(image.samples);
}

struct FreeImage {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
struct FreeCodec {
  void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct FreeStream {
  void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};

/// A stream of OpenJPEG into memory.
struct Sink {
  std::vector<std::uint8_t> bytes;
  std::size_t at = 0;

  static OPJ_SIZE_T Write(void* from, OPJ_SIZE_T count, void* self) {
    auto& sink = *static_cast<Sink*>(self);
    if (sink.bytes.size() < sink.at + count) sink.bytes.resize(sink.at + count);
    std::memcpy(sink.bytes.data() + sink.at, from, count);
    sink.at += count;
    return count;
  }
  static OPJ_OFF_T Skip(OPJ_OFF_T count, void* self) {
    static_cast<Sink*>(self)->at += static_cast<std::size_t>(count);
    return count;
  }
  static OPJ_BOOL Seek(OPJ_OFF_T place, void* self) {
    static_cast<Sink*>(self)->at = static_cast<std::size_t>(place);
    return OPJ_TRUE;
  }
};

std::unique_ptr<opj_image_t, FreeImage> ImageForOpenJpeg(const PlainImage& image) {
  opj_image_cmptparm_t component{};
  component.dx = component.dy = 1;
  component.w = image.columns;
  component.h = image.rows;
  component.prec = kPrecision;
  std::unique_ptr<opj_image_t, FreeImage> made(opj_image_create(1, &component, OPJ_CLRSPC_GRAY));
  if (!made) throw std::bad_alloc();
  made->x1 = image.columns;
  made->y1 = image.rows;
  for (std::size_t at = 0; at < image.samples.size(); ++at) {
    made->comps[0].data[at] = image.samples[at];
  }
  return made;
}

std::uint64_t EncodeByOpenJpeg(const PlainImage& image) {
  const auto made = ImageForOpenJpeg(image);
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.tcp_numlayers = 1;
  parameters.cp_disto_alloc = 1;
  // Small images have room for fewer than usual.
  const std::uint32_t side = std::min(image.columns, image.rows);
  while (parameters.numresolution > 1 && side >> (parameters.numresolution - 1) == 0) {
    --parameters.numresolution;
  }
  const std::unique_ptr<opj_codec_t, FreeCodec> codec(opj_create_compress(OPJ_CODEC_J2K));
  const std::unique_ptr<opj_stream_t, FreeStream> stream(opj_stream_default_create(OPJ_FALSE));
  Sink sink;
  opj_stream_set_user_data(stream.get(), &sink, nullptr);
  opj_stream_set_write_function(stream.get(), Sink::Write);
  opj_stream_set_skip_function(stream.get(), Sink::Skip);
  opj_stream_set_seek_function(stream.get(), Sink::Seek);
  if (opj_setup_encoder(codec.get(), &parameters, made.get()) == OPJ_FALSE ||
      opj_start_compress(codec.get(), made.get(), stream.get()) == OPJ_FALSE ||
      opj_encode(codec.get(), stream.get()) == OPJ_FALSE ||
      opj_end_compress(codec.get(), stream.get()) == OPJ_FALSE) {
    throw std::runtime_error("OpenJPEG does not encode");
  }
  return sink.bytes.size();
}

template <class EncodeOne>
void MeasureEncoding(const JobContext& context, std::string_view peer, EncodeOne encode) {
  std::vector<PlainImage> images;
  std::uint64_t bytes = 0;
  for (const SeriesImage& image : LoadNativeFor(MethodOfJob(context.job.name), context.Input())) {
    images.push_back(PlainImageOf(*image));
    bytes += images.back().samples.size() * 2;
  }
  std::uint64_t sum = 0;
  Measure({
      .job = context.job.name,
      .peer = peer,
      .bytes = bytes,
      .items = images.size(),
      .repetition =
          [&] {
            sum = 0;
            const Stopwatch watch;
            for (const PlainImage& image : images) sum += encode(image);
            return watch.Seconds();
          },
      .check = [&] { return static_cast<double>(sum); },
  });
}

constexpr Job kJobs[] = {
    {"codec.jpls.encode",
     [](const JobContext& context) { MeasureEncoding(context, "charls", EncodeByCharls); },
     "CT400E"},
    {"codec.j2k.encode",
     [](const JobContext& context) { MeasureEncoding(context, "openjpeg", EncodeByOpenJpeg); },
     "CT400E"},
};

}  // namespace

std::span<const Job> PeerJobs() { return kJobs; }

}  // namespace tessaret::bench
