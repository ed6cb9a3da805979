#include "output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include <gtest/gtest.h>

#include "standard_output.h"
#include "support/child_process.h"

namespace tessaret::tool {
namespace {

/// What `work` throws with a standard output of its own that takes everything; 0 for nothing.
template <class Work>
int ErrorOf(Work work) {
  return test::RunInChild([&] {
    ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    Output output;
    try {
      work(output);
    } catch (const OutputError& error) {
      return error.Number();
    }
    return 0;
  });
}

TEST(Output, ClosingClosesWhatWasWrittenTo) {
  EXPECT_EQ(ErrorOf([](Output& output) {
              output.Write("result");
              output.Close();
              if (::fcntl(STDOUT_FILENO, F_GETFD) != -1) throw OutputError(EEXIST);
            }),
            0);
}

TEST(Output, PartsOfEverySizeComeInTheirOrder) {
  const std::string large(65536, 'b');
  EXPECT_EQ(StandardOutputOf([&](Output& output) {
              output.Write("a");
              output.Write(large);
              output.Write("c");
            }),
            'a' + large + 'c');
}

TEST(Output, ALargePartCountsAsWritten) {
  EXPECT_EQ(ErrorOf([](Output& output) {
              output.Write(std::string(65536, 'b'));
              ::close(STDOUT_FILENO);
              output.Close();
            }),
            EBADF);
}

TEST(Output, AFailedCloseIsTold) {
  EXPECT_EQ(ErrorOf([](Output& output) {
              output.Write("result");
              output.Flush();
              ::close(STDOUT_FILENO);
              output.Close();
            }),
            EBADF);
}

TEST(Output, WhatNothingWasWrittenToIsLeftAlone) {
  EXPECT_EQ(ErrorOf([](Output& output) {
              output.Close();
              if (::fcntl(STDOUT_FILENO, F_GETFD) == -1) throw OutputError(errno);
            }),
            0);
}

}  // namespace
}  // namespace tessaret::tool
