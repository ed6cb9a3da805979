// Every allocation of every codec failing in its turn, those of the C libraries beneath included.
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include <gtest/gtest.h>

#include "codecs/codec_images.h"
#include "support/failing_malloc.h"

namespace tessaret::codecs {
namespace {

using ::tessaret::test::FailEveryMalloc;
using ::tessaret::test::OutstandingBlocks;
using test::Octets;

struct Row {
  const char* syntax;
  FrameFormat format;
  bool isOnlyDecoded = false;
};

/// JPEG 2000 is encoded by a library that writes through null where it has no memory.
std::vector<Row> Rows() {
  const FrameFormat gray8 = test::MakeFormat(40, 24, 1, 8, 8);
  const FrameFormat rgb = test::MakeFormat(40, 24, 3, 8, 8);
  const FrameFormat gray12 = test::MakeFormat(40, 24, 1, 16, 12);
  return {{test::kRle, gray12},         {test::kJpegBaseline, gray8},
          {test::kJpegBaseline, rgb},   {test::kJpegExtended, gray12},
          {test::kJpegLossless, rgb},   {test::kJpegFirstOrder, gray12},
          {test::kJpegLs, gray12},      {test::kJpegLs, rgb},
          {test::kJpegLsNear, gray8},   {test::kJpeg2000, gray12, true},
          {test::kJpeg2000, rgb, true}, {test::kJpeg2000Lossy, gray8, true}};
}

/// Runs `act`, which may fail with words, on a copy of `object` for every allocation that may fail in it. How many these are.
template <class Act>
std::uint64_t FailEveryStep(const DICOMObject& object, Act act) {
  const Octets pixels = ::tessaret::test::ValueOf(*object.GetVR(0x7FE0, 0x0010));
  const std::string syntax = test::SyntaxOf(object);
  std::unique_ptr<DICOMObject> copy(object.Clone(true));
  DcmCompEngine engine(test::Registry());
  bool isDone = false;
  std::vector<std::int64_t> left;  // blocks after each round
  left.reserve(1024);
  const auto look = [&] {
    if (!isDone) {
      EXPECT_NE(engine.ErrorText, "");
      EXPECT_EQ(test::SyntaxOf(*copy), syntax);
      EXPECT_EQ(::tessaret::test::ValueOf(*copy->GetVR(0x7FE0, 0x0010)), pixels);
    }
    copy.reset();
    engine.ErrorText = std::string();
    left.push_back(OutstandingBlocks());
    copy.reset(object.Clone(true));
  };
  const std::uint64_t count = FailEveryMalloc([&] { isDone = act(engine, *copy); }, look);
  EXPECT_TRUE(isDone);
  // The engine remembers its codec from the second round on.
  EXPECT_LE(left.back(), left.front() + 4) << "a leak";
  return count;
}

TEST(CodecMemory, WithoutMemoryAtAnyMomentTheObjectStaysAsItWas) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.syntax);
    const std::vector<Octets> frames = {test::MakeFrame(row.format, test::Pattern::kGradient),
                                        test::MakeFrame(row.format, test::Pattern::kNoise)};
    // Keeps the codec, so that what fails is its work and not its loading.
    DcmCompEngine keeper(test::Registry());
    const auto object = test::NewImage(row.format, frames);
    ASSERT_TRUE(keeper.CanCompress(object.get(), row.syntax, nullptr)) << keeper.ErrorText;
    std::uint64_t encoding = 0;
    if (!row.isOnlyDecoded) {
      encoding = FailEveryStep(*object, [&](DcmCompEngine& engine, DICOMObject& copy) {
        return engine.Compress(&copy, row.syntax, nullptr);
      });
      EXPECT_GT(encoding, 10u);
    }
    ASSERT_TRUE(keeper.Compress(object.get(), row.syntax, nullptr)) << keeper.ErrorText;
    const std::uint64_t decoding =
        FailEveryStep(*object, [&](DcmCompEngine& engine, DICOMObject& copy) {
          return engine.Decompress(&copy, nullptr, nullptr);
        });
    EXPECT_GT(decoding, 5u);
    std::printf("%s: %llu calls encoding, %llu decoding\n", row.syntax,
                static_cast<unsigned long long>(encoding),
                static_cast<unsigned long long>(decoding));
  }
}

/// Bytes of address space that this process takes.
std::uint64_t AddressSpace() {
  std::ifstream status("/proc/self/statm");
  std::uint64_t pages = 0;
  status >> pages;
  return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

enum Outcome : int { kDone = 0, kRefused = 1, kWithoutWords = 2 };

/// What becomes of decompressing in a child that has so many bytes more than it takes now; a signal's number with its sign turned.
int DecompressWithin(DICOMObject& object, std::uint64_t room) {
  const pid_t child = ::fork();
  if (child == 0) {
    const rlimit limit = {AddressSpace() + room, AddressSpace() + room};
    ::setrlimit(RLIMIT_AS, &limit);
    DcmCompEngine engine(test::Registry());
    const bool isDone = engine.Decompress(&object, nullptr, nullptr);
    ::_exit(isDone ? kDone : engine.ErrorText.empty() ? kWithoutWords : kRefused);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(CodecMemory, InLittleRoomAnImageIsDecodedOrRefused) {
  // What is freed goes back to the system, so that the children do not begin with room of their own.
  ::mallopt(M_MMAP_THRESHOLD, 1 << 14);
  ::mallopt(M_TRIM_THRESHOLD, 1 << 14);
  for (const char* syntax : {test::kRle, test::kJpegFirstOrder, test::kJpegLs, test::kJpeg2000}) {
    SCOPED_TRACE(syntax);
    const FrameFormat format = test::MakeFormat(700, 500, 1, 16, 12);
    const auto object = test::NewImage(format, {test::MakeFrame(format, test::Pattern::kNoise)});
    DcmCompEngine keeper(test::Registry());
    ASSERT_TRUE(keeper.Compress(object.get(), syntax, nullptr)) << keeper.ErrorText;
    int refused = 0;
    int done = 0;
    for (std::uint64_t room = 0; room < 40; room += 2) {
      const int outcome = DecompressWithin(*object, room << 20);
      EXPECT_TRUE(outcome == kDone || outcome == kRefused) << room << " MiB: " << outcome;
      ++(outcome == kDone ? done : refused);
    }
    if (syntax == test::kJpeg2000) {
      EXPECT_GT(refused, 0);
    }
    EXPECT_GT(done, 0);
  }
}

}  // namespace
}  // namespace tessaret::codecs
