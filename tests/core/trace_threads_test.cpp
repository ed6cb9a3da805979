#include <atomic>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/element_maker.h"
#include "core/object_text.h"
#include "core/trace.h"
#include "support/build_kind.h"
#include "support/bytes.h"
#include "support/fork_amid.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

constexpr int kThreads = 8;
constexpr int kLines = 200;

/// A line that shows a mixture: its own number many times, at a length that differs from those of the others.
std::string LineOf(int thread, int line) {
  std::string text;
  for (int words = 0; words <= (thread * 37 + line * 11) % 400; ++words) {
    text += std::to_string(thread) + "." + std::to_string(line) + " ";
  }
  return text;
}

template <class Work>
void RunInThreads(Work work) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(work, thread);
  for (std::thread& thread : threads) thread.join();
}

void TraceLines(int thread) {
  for (int line = 0; line < kLines; ++line) {
    DumpTrace(kDumpSocket, "%s\n", LineOf(thread, line).c_str());
  }
}

/// How often each line stands in these files.
std::map<std::string, int> LinesIn(const std::vector<std::string>& paths) {
  std::map<std::string, int> lines;
  for (const std::string& path : paths) {
    std::istringstream text(test::ReadText(path));
    for (std::string line; std::getline(text, line);) ++lines[line];
  }
  return lines;
}

void ExpectEveryLineOnce(const std::map<std::string, int>& lines) {
  EXPECT_EQ(lines.size(), static_cast<std::size_t>(kThreads * kLines));
  for (int thread = 0; thread < kThreads; ++thread) {
    for (int line = 0; line < kLines; ++line) {
      const auto found = lines.find(LineOf(thread, line));
      ASSERT_NE(found, lines.end()) << thread << "." << line;
      EXPECT_EQ(found->second, 1) << thread << "." << line;
    }
  }
}

class TraceThreads : public testing::Test {
 protected:
  ~TraceThreads() override {
    SetDumpFlag(0xFFFFFFFF, false);
    SetDumpFile(nullptr);
  }
  test::TempFolder folder_;
};

TEST_F(TraceThreads, TextsOfSeveralThreadsAlternateButDoNotMix) {
  const std::string path = folder_.File("trace");
  SetDumpFile(path.c_str());
  SetDumpFlag(kDumpSocket, true);
  RunInThreads(TraceLines);
  ExpectEveryLineOnce(LinesIn({path}));
}

TEST_F(TraceThreads, TheFileMayChangeWhileOthersTrace) {
  const std::string first = folder_.File("first");
  const std::string second = folder_.File("second");
  test::WriteText(first, "");
  test::WriteText(second, "");
  SetDumpFile(first.c_str());
  SetDumpFlag(kDumpSocket, true);
  std::atomic<bool> done = false;
  std::thread changer([&] {
    while (!done) {
      SetDumpFile(second.c_str());
      SetDumpFlag(kDumpData, true);
      SetDumpFile(first.c_str());
      SetDumpFlag(kDumpData, false);
    }
  });
  RunInThreads(TraceLines);
  done = true;
  changer.join();
  ExpectEveryLineOnce(LinesIn({first, second}));
}

TEST_F(TraceThreads, SeveralThreadsMayListOneObject) {
  DICOMObject object;
  object.Push(test::NewElement(0x0008, 0x1140, type_code::SQ, test::Bytes{}));
  for (int item = 0; item < 50; ++item) {
    auto* nested = new DICOMObject;
    nested->Push(test::NewElement(0x0010, 0x0010, type_code::PN, std::to_string(item)));
    object.Push(nested);
  }
  const std::string alone = ObjectToText(object, 0, nullptr);
  std::atomic<int> equal = 0;
  RunInThreads([&](int) { equal += ObjectToText(object, 0, nullptr) == alone ? 1 : 0; });
  EXPECT_EQ(equal, kThreads);
}

TEST_F(TraceThreads, AChildOfForkTracesWhateverOtherThreadsDo) {
  if (test::kInstrumented) GTEST_SKIP() << test::kForkUnderSanitizer;
  const int stuck = test::FirstStuckChild(100, [] {
    for (int times = 0; times < 100; ++times) SetDumpFile(GetDumpFile().c_str());
  });
  EXPECT_EQ(stuck, -1);
}

}  // namespace
}  // namespace tessaret
