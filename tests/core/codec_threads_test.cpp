// Engines in several threads share the census, the codecs and their counts.
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/codec_helpers.h"
#include "core/comp_engine.h"
#include "support/build_kind.h"
#include "support/child_process.h"
#include "support/fork_amid.h"

namespace tessaret {
namespace {

constexpr int kThreads = 4;

template <class Work>
void InThreads(Work work) {
  std::vector<std::thread> threads;
  for (int at = 0; at < kThreads; ++at) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
}

TEST(CompEngineThreads, ShareCodecsFromTheirFirstUseOn) {
  test::TestCodecs codecs("toy_codec.so", "toy_codec_c.so");
  std::atomic<int> wrong = 0;
  testing::internal::CaptureStderr();
  InThreads([&] {
    for (int round = 0; round < 50; ++round) {
      const char* syntax = round % 2 == 0 ? test::kToy : test::kCToy;
      const auto object = test::NewImage(3);
      DcmCompEngine engine(codecs.registry);
      if (!engine.Compress(object.get(), syntax, nullptr)) ++wrong;
      if (!engine.Decompress(object.get(), nullptr, nullptr)) ++wrong;
      if (test::ValueOf(test::PixelsOf(*object)) != test::NativePixels(3)) ++wrong;
    }
  });
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(wrong, 0);
  for (const char* syntax : {test::kToy, test::kCToy}) {
    EXPECT_EQ(codecs.registry.Find(syntax)->UseCount, 0u);
  }
}

/// The most threads that were in the codec at once, while each converted objects of ten frames.
int MostInside(const std::string& syntax) {
  test::TestCodecs codecs("bad_codec.so");
  DcmCompEngine keeper(codecs.registry);
  const auto first = test::NewImage(1);
  keeper.CanCompress(first.get(), syntax.c_str(), nullptr);
  std::atomic<int> highest = 0;
  std::atomic<int> wrong = 0;
  InThreads([&] {
    for (int round = 0; round < 20; ++round) {
      const auto object = test::NewCompressed(10, syntax, 10);
      DcmCompEngine engine(codecs.registry);
      if (!engine.Decompress(object.get(), nullptr, &highest)) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
  return highest;
}

TEST(CompEngineThreads, ACodecServesOneDataSetAtATime) {
  EXPECT_EQ(MostInside(test::BadUid(13)), 1);
}

/// How often `work(engine, syntax)` fails where half of the threads have another syntax of the same codec object.
template <class Work>
int FailuresWithOneObject(Work work) {
  test::TestCodecs codecs("one_object_codec.so");
  std::atomic<int> turn = 0;
  std::atomic<int> failures = 0;
  testing::internal::CaptureStderr();
  InThreads([&] {
    const std::string syntax = "1.2.999.5." + std::to_string(turn++ % 2);
    for (int round = 0; round < 50; ++round) {
      DcmCompEngine engine(codecs.registry);
      if (!work(engine, syntax)) ++failures;
    }
  });
  testing::internal::GetCapturedStderr();
  return failures;
}

TEST(CompEngineThreads, AnObjectThatServesTwoSyntaxesDecompressesOneDataSetAtATime) {
  const int failures = FailuresWithOneObject([](DcmCompEngine& engine, const std::string& syntax) {
    const auto object = test::NewCompressed(100, syntax, 1);
    return engine.Decompress(object.get(), nullptr, nullptr);
  });
  EXPECT_EQ(failures, 0);
}

TEST(CompEngineThreads, AnObjectThatServesTwoSyntaxesCompressesOneDataSetAtATime) {
  const int failures = FailuresWithOneObject([](DcmCompEngine& engine, const std::string& syntax) {
    const auto object = test::NewImage(50);
    return engine.Compress(object.get(), syntax.c_str(), nullptr);
  });
  EXPECT_EQ(failures, 0);
}

TEST(CompEngineThreads, AnObjectThatServesTwoSyntaxesIsAskedByOneThreadAtATime) {
  const int failures = FailuresWithOneObject([](DcmCompEngine& engine, const std::string& syntax) {
    const auto object = test::NewImage(1);
    for (int question = 0; question < 50; ++question) {
      if (!engine.CanCompress(object.get(), syntax.c_str(), nullptr)) return false;
    }
    return true;
  });
  EXPECT_EQ(failures, 0);
}

TEST(CompEngineThreads, AConcurrentCodecIsCalledByAllAtOnce) {
  const int most = MostInside(test::BadUid(14));
  EXPECT_GE(most, 1);
  EXPECT_LE(most, kThreads);
}

TEST(CompEngineThreads, AChildOfForkHasItsCodecsWhateverOtherThreadsDo) {
  if (test::kInstrumented) GTEST_SKIP() << test::kForkUnderSanitizer;
  test::TestCodecs codecs("toy_codec.so");
  const int stuck = test::FirstStuckChild(100, [&] {
    const auto object = test::NewImage(1);
    DcmCompEngine engine(codecs.registry);
    engine.CanCompress(object.get(), test::kToy, nullptr);
  });
  EXPECT_EQ(stuck, -1);
}

/// A thread that is amid the work of a codec, until this goes.
class BusyThread {
 public:
  BusyThread(CodecRegistry& registry, const char* syntax) : entry_(*registry.Find(syntax)) {
    EXPECT_TRUE(registry.Acquire(entry_));
    thread_ = std::thread([this] {
      const std::lock_guard busy(*entry_.Calls);
      begun_.release();
      end_.acquire();
    });
    begun_.acquire();
  }
  BusyThread(const BusyThread&) = delete;
  BusyThread& operator=(const BusyThread&) = delete;
  ~BusyThread() {
    end_.release();
    thread_.join();
  }

 private:
  CodecEntry& entry_;
  std::binary_semaphore begun_{0};
  std::binary_semaphore end_{0};
  std::thread thread_;
};

/// How the three operations fail in a child, all with the same words; 0 where they do.
int TryAllInAChild(CodecRegistry& registry) {
  return test::RunInChild([&] {
    ::alarm(20);
    const std::string words =
        "The codec for transfer syntax [1.2.999.1] was at work when this "
        "process was forked";
    const auto object = test::NewImage(1);
    const auto compressed = test::NewCompressed(1, test::kToy, 1);
    DcmCompEngine engine(registry);
    // The second time it has the codec already.
    for (int time = 0; time < 2; ++time) {
      if (engine.CanCompress(object.get(), test::kToy, nullptr) || engine.ErrorText != words)
        return 1;
      if (engine.Compress(object.get(), test::kToy, nullptr) || engine.ErrorText != words) return 2;
      if (engine.Decompress(compressed.get(), nullptr, nullptr) || engine.ErrorText != words)
        return 3;
    }
    if (test::ItemsOf(*compressed).size() != 2) return 4;
    return engine.Decompress(object.get(), nullptr, nullptr) ? 0 : 5;
  });
}

TEST(CompEngineThreads, ACodecThatWasAtWorkIsNotToBeHadInAChildOfFork) {
  test::TestCodecs codecs("toy_codec.so");
  {
    const BusyThread busy(codecs.registry, test::kToy);
    EXPECT_EQ(TryAllInAChild(codecs.registry), 0);
  }
  const auto object = test::NewImage(1);
  DcmCompEngine engine(codecs.registry);
  EXPECT_TRUE(engine.Compress(object.get(), test::kToy, nullptr)) << "the parent goes on";
  EXPECT_EQ(test::RunInChild([&] {
              ::alarm(20);
              return engine.Decompress(object.get(), nullptr, nullptr) ? 0 : 1;
            }),
            0)
      << "and a child that is made later has it";
  codecs.registry.Release(*codecs.registry.Find(test::kToy));
}

}  // namespace
}  // namespace tessaret
