// Verbs within this process, where a file can come to the output's place at a chosen moment.
#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

using test::FileFailure;

constexpr const char* kOther = "of somebody else";

class ComesMeanwhile : public testing::Test {
 protected:
  /// Runs a verb; a file comes to `path` when the bytes of the verb's own are about to be secured.
  ExitCode Run(RunVerb (*setUp)(CLI::App&), const std::string& arguments, const std::string& path) {
    CLI::App app;
    const RunVerb run = setUp(app);
    app.parse(arguments, false);
    Host host;
    FileFailure failure;
    failure.RunBefore(FileCall::kSync, 1, [&] { test::WriteText(path, kOther); });
    testing::internal::CaptureStderr();
    const ExitCode code = run(host);
    words_ = testing::internal::GetCapturedStderr();
    EXPECT_GT(failure.Calls(FileCall::kSync), 0);
    return code;
  }

  /// Without --force the file stays, with it the verb's own takes its place.
  void Expect(RunVerb (*setUp)(CLI::App&), const std::string& arguments, const std::string& path) {
    EXPECT_EQ(Run(setUp, arguments, path), ExitCode::kOutputFailed);
    EXPECT_EQ(words_, "tessaret: " + path + ": File exists\n");
    EXPECT_EQ(test::ReadText(path), kOther);
    EXPECT_EQ(Run(setUp, arguments + " --force", path), ExitCode::kDone);
    EXPECT_EQ(words_, "");
    EXPECT_NE(test::ReadText(path), kOther);
  }

  test::TempFolder folder_;
  std::string words_;
};

TEST_F(ComesMeanwhile, AFileStaysThatTakesThePlaceOfAPhantom) {
  Expect(&SetUpPhantom, folder_.Path().string() + " --size 8 --slices 1",
         folder_.File("IM000001.dcm"));
}

TEST_F(ComesMeanwhile, AFileStaysThatTakesThePlaceOfADictionary) {
  const std::string path = folder_.File("dict.bin");
  Expect(&SetUpDictionary, "--compile " + path, path);
}

TEST_F(ComesMeanwhile, AFileStaysThatTakesThePlaceOfAChangedOne) {
  EXPECT_EQ(Run(&SetUpPhantom, folder_.Path().string() + " --size 8 --slices 1",
                folder_.File("unrelated")),
            ExitCode::kDone);
  const std::string source = folder_.File("IM000001.dcm");
  const std::string changed = folder_.File("changed.dcm");
  Expect(&SetUpSet, source + ' ' + changed + " PatientID=x", changed);
  const std::string translated = folder_.File("translated.dcm");
  Expect(&SetUpTranscode, source + ' ' + translated + " --to big", translated);
}

}  // namespace
}  // namespace tessaret::tool
