// Verbs within this process, where a file can come to the output's place at a chosen moment.
#include <gtest/gtest.h>

#include "command_line.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret::tool {
namespace {

using test::FileFailure;
using Words = std::vector<std::string>;

constexpr const char* kOther = "of somebody else";

class ComesMeanwhile : public testing::Test {
 protected:
  /// Runs a verb; a file comes to `path` when the bytes of the verb's own are about to be secured.
  ExitCode Run(const Words& arguments, const std::string& path) {
    CommandLine line;
    Host host;
    const RunVerb run = line.Parse(arguments, host).value();
    FileFailure failure;
    failure.RunBefore(FileCall::kSync, 1, [&] { test::WriteText(path, kOther); });
    testing::internal::CaptureStderr();
    const ExitCode code = run(host);
    words_ = testing::internal::GetCapturedStderr();
    EXPECT_GT(failure.Calls(FileCall::kSync), 0);
    return code;
  }

  /// Without --force the file stays, with it the verb's own takes its place.
  void Expect(Words arguments, const std::string& path) {
    EXPECT_EQ(Run(arguments, path), ExitCode::kOutputFailed);
    EXPECT_EQ(words_, "tessaret: " + path + ": File exists\n");
    EXPECT_EQ(test::ReadText(path), kOther);
    arguments.push_back("--force");
    EXPECT_EQ(Run(arguments, path), ExitCode::kDone);
    EXPECT_EQ(words_, "");
    EXPECT_NE(test::ReadText(path), kOther);
  }

  test::TempFolder folder_;
  std::string words_;
};

TEST_F(ComesMeanwhile, AFileStaysThatTakesThePlaceOfAPhantom) {
  Expect({"phantom", folder_.Path().string(), "--size=8", "--slices=1"},
         folder_.File("IM000001.dcm"));
}

TEST_F(ComesMeanwhile, AFileStaysThatTakesThePlaceOfADictionary) {
  const std::string path = folder_.File("dict.bin");
  Expect({"dictionary", "--compile", path}, path);
}

TEST_F(ComesMeanwhile, AFileStaysThatTakesThePlaceOfAChangedOne) {
  EXPECT_EQ(Run({"phantom", folder_.Path().string(), "--size=8", "--slices=1"},
                folder_.File("unrelated")),
            ExitCode::kDone);
  const std::string source = folder_.File("IM000001.dcm");
  const std::string changed = folder_.File("changed.dcm");
  Expect({"set", source, changed, "PatientID=x"}, changed);
  const std::string translated = folder_.File("translated.dcm");
  Expect({"transcode", source, translated, "--to=big"}, translated);
}

}  // namespace
}  // namespace tessaret::tool
