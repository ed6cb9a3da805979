// Many threads in one codec library at once, each with an object of its own.
#include <thread>

#include <gtest/gtest.h>

#include "codecs/codec_images.h"

namespace tessaret::codecs {
namespace {

using test::Octets;

TEST(CodecLibraryThreads, EightThreadsGetTheBytesThatOneGets) {
  constexpr const char* kSyntaxes[] = {test::kRle, test::kJpegBaseline, test::kJpegFirstOrder,
                                       test::kJpegLs, test::kJpeg2000};
  const FrameFormat format = test::MakeFormat(48, 40, 1, 8, 8);
  const std::vector<Octets> frames = test::FramesOf(format);
  const auto work = [&](const char* syntax) {
    const auto object = test::NewImage(format, frames);
    DcmCompEngine engine(test::Registry());
    if (!engine.Compress(object.get(), syntax, nullptr)) return Octets();
    if (!engine.Decompress(object.get(), nullptr, nullptr)) return Octets();
    return test::NativeOf(*object, frames.size() * format.Size());
  };
  std::vector<Octets> alone;
  for (const char* syntax : kSyntaxes) alone.push_back(work(syntax));
  std::vector<int> wrong(8);
  std::vector<std::thread> threads;
  for (int& count : wrong) {
    threads.emplace_back([&] {
      for (int round = 0; round < 3; ++round) {
        for (std::size_t at = 0; at < std::size(kSyntaxes); ++at) {
          if (alone[at].empty() || work(kSyntaxes[at]) != alone[at]) ++count;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(8));
}

}  // namespace
}  // namespace tessaret::codecs
