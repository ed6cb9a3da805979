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

TEST(CodecLibraryThreads, LargeJpegIsCheckedOnAnotherCoreWhileItIsDecoded) {
  // Noise of this size has a code stream of some 60 kB.
  const FrameFormat format = test::MakeFormat(256, 256, 1, 8, 8);
  const auto object = test::NewImage(format, {test::MakeFrame(format, test::Pattern::kNoise)});
  DcmCompEngine engine(test::Registry());
  ASSERT_TRUE(engine.Compress(object.get(), test::kJpegBaseline, nullptr)) << engine.ErrorText;
  const Octets stream =
      ::tessaret::test::ValueOf(*object->GetVR(0x7FE0, 0x0010)->GetItem(1)->GetVR(0xFFFE, 0xE000));
  ASSERT_GT(stream.size(), 40'000u);
  ASSERT_TRUE(engine.Decompress(object.get(), nullptr, nullptr)) << engine.ErrorText;
  // What libjpeg takes for good the check refuses, and its words come out.
  Octets damaged = stream;
  int refused = 0;
  for (std::size_t at = 30'000; at < 30'200; at += 10) {
    damaged[at] ^= 0x10;
    const auto broken = test::NewCoded(format, test::kJpegBaseline, 1, {damaged});
    if (!engine.Decompress(broken.get(), nullptr, nullptr)) {
      ++refused;
      EXPECT_EQ(engine.ErrorText.find("Transfer syntax [1.2.840.10008.1.2.4.50], frame 1 of 1: "),
                0u);
    }
    damaged[at] ^= 0x10;
  }
  EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace tessaret::codecs
