#include "platform/staged_file.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/file_calls.h"
#include "platform/whole_file.h"
#include "support/bytes.h"
#include "support/child_process.h"
#include "support/file_failure.h"
#include "support/memory_file.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::ChildProcess;
using test::FileFailure;
using test::Pattern;
using test::ReadBytes;
using test::ReadText;
using test::WriteText;

int Write(const std::string& path, const Bytes& bytes) {
  return WriteWholeFile(path, bytes.data(), bytes.size());
}

int Write(const std::string& path, std::string_view text) {
  return WriteWholeFile(path, text.data(), text.size());
}

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

ino_t InodeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

class StagedFileTest : public testing::Test {
 protected:
  test::TempFolder folder_;
  std::string path_ = folder_.File("file");
};

TEST_F(StagedFileTest, AnOpenPipeIsWrittenUnderItsNameInDevFd) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  EXPECT_EQ(Write("/dev/fd/" + std::to_string(ends[1]), "bytes"), 0);
  ::close(ends[1]);
  char read[16] = {};
  EXPECT_EQ(::read(ends[0], read, sizeof(read)), 5);
  EXPECT_STREQ(read, "bytes");
  ::close(ends[0]);
}

TEST_F(StagedFileTest, AFileWithoutANameIsWrittenWhereItIs) {
  test::MemoryFile memory;
  memory.Fill(Pattern(100));
  EXPECT_EQ(Write(memory.Path(), "bytes"), 0);
  EXPECT_EQ(ReadText(memory.Path()), "bytes");

  WriteText(path_, "before");
  const int open = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::unlink(path_.c_str()), 0);
  const std::string link = "/dev/fd/" + std::to_string(open);
  EXPECT_EQ(Write(link, "after"), 0);
  EXPECT_EQ(ReadText(link), "after");
  // The link reads as the former name with a mark, which may be the name of another file.
  WriteText(path_ + " (deleted)", "another");
  EXPECT_EQ(Write(link, "again"), 0);
  EXPECT_EQ(ReadText(link), "again");
  EXPECT_EQ(ReadText(path_ + " (deleted)"), "another");
  EXPECT_EQ(folder_.Listing(), "file (deleted)");
  ::close(open);
}

TEST_F(StagedFileTest, AFileWhoseNameLooksLikeThatOfNoneIsReplacedAsAnyOther) {
  const std::string path = path_ + " (deleted)";
  WriteText(path, "old");
  const ino_t before = InodeOf(path);
  EXPECT_EQ(Write(path, "new"), 0);
  EXPECT_EQ(ReadText(path), "new");
  EXPECT_NE(InodeOf(path), before);
}

TEST_F(StagedFileTest, AFileThatIsThereStaysWhereItIsToBeKept) {
  EXPECT_EQ(WriteWholeFile(path_, "new", 3, Existing::kKeep), 0);
  EXPECT_EQ(ReadText(path_), "new");
  EXPECT_EQ(WriteWholeFile(path_, "other", 5, Existing::kKeep), EEXIST);
  EXPECT_EQ(ReadText(path_), "new");
  EXPECT_EQ(folder_.Listing(), "file");
}

TEST_F(StagedFileTest, AFileThatComesBeforeTheCommitStaysWhereItIsToBeKept) {
  // The second time as on a file system without links.
  for (const bool links : {true, false}) {
    FileFailure calls;
    if (!links) calls.FailCall(FileCall::kLink, 1, EPERM);
    StagedFile staged(path_, Existing::kKeep);
    ASSERT_TRUE(staged.Begin());
    WriteText(staged.StagingPath(), "late");
    WriteText(path_, "early");
    EXPECT_FALSE(staged.Commit());
    EXPECT_EQ(staged.Error(), EEXIST);
    EXPECT_EQ(ReadText(path_), "early");
    EXPECT_EQ(folder_.Listing(), "file");
    std::filesystem::remove(path_);
  }
}

TEST_F(StagedFileTest, WithoutLinksAFreePlaceIsTakenAllTheSame) {
  for (const int noLinks : {EPERM, EOPNOTSUPP, ENOSYS}) {
    FileFailure calls;
    calls.FailCall(FileCall::kLink, 1, noLinks);
    EXPECT_EQ(WriteWholeFile(path_, "new", 3, Existing::kKeep), 0);
    EXPECT_EQ(ReadText(path_), "new");
    EXPECT_EQ(folder_.Listing(), "file");
    std::filesystem::remove(path_);
  }
}

TEST_F(StagedFileTest, WithoutLinksAPlaceThatCannotBeLookedAtIsNotTaken) {
  FileFailure calls;
  calls.FailCall(FileCall::kLink, 1, EPERM);
  calls.RunBefore(FileCall::kLink, 1, [&] {
    WriteText(path_, "early");
    calls.FailCalls(FileCall::kStat, 1, 1000, EIO);
  });
  EXPECT_EQ(WriteWholeFile(path_, "late", 4, Existing::kKeep), EIO);
  EXPECT_EQ(ReadText(path_), "early");
  EXPECT_EQ(folder_.Listing(), "file");
}

TEST_F(StagedFileTest, AFileWithoutANameStaysWhereItIsToBeKept) {
  const test::MemoryFile memory(Pattern(100));
  EXPECT_EQ(WriteWholeFile(memory.Path(), "new", 3, Existing::kKeep), EEXIST);
  EXPECT_EQ(ReadBytes(memory.Path()), Pattern(100));
}

TEST_F(StagedFileTest, ASecondNameThatCannotBeRemovedDoesNoHarmAndGoesWithTheNextWriter) {
  {
    FileFailure calls;
    calls.FailCall(FileCall::kRemove, 1, EIO);
    EXPECT_EQ(WriteWholeFile(path_, "new", 3, Existing::kKeep), 0);
  }
  EXPECT_EQ(folder_.Listing(), ".file.tessaret-0 file");
  std::filesystem::rename(folder_.File(".file.tessaret-0"), folder_.File(".file.tessaret-63"));
  EXPECT_EQ(WriteWholeFile(path_, "next", 4, Existing::kKeep), EEXIST);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "new");
}

TEST_F(StagedFileTest, AWriterKilledAtAnyCallOfANewFileLeavesItWholeOrNotAtAll) {
  int made = 0;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    const int ended = test::RunInChild([&] {
      FileFailure failure;
      failure.KillAtCall(nth);
      return WriteWholeFile(path_, "new", 3, Existing::kKeep);
    });
    if (ended == 0) break;
    ASSERT_EQ(ended, -SIGKILL);
    const bool isThere = std::filesystem::exists(path_);
    made += isThere ? 1 : 0;
    // What the next writer answers does not matter to what it clears away.
    EXPECT_EQ(WriteWholeFile(path_, "next", 4, Existing::kKeep), isThere ? EEXIST : 0);
    EXPECT_EQ(ReadText(path_), isThere ? "new" : "next");
    EXPECT_EQ(folder_.Listing(), "file");
    std::filesystem::remove(path_);
  }
  EXPECT_EQ(made, 2) << "before the second name is removed and before the last close";
}

TEST_F(StagedFileTest, ALinkThatFailsForAnotherReasonIsAnError) {
  FileFailure calls;
  calls.FailCall(FileCall::kLink, 1, EIO);
  EXPECT_EQ(WriteWholeFile(path_, "new", 3, Existing::kKeep), EIO);
  EXPECT_EQ(folder_.Listing(), "");
}

TEST_F(StagedFileTest, TheFileComesToItsPlaceWithTheCommit) {
  StagedFile staged(path_);
  ASSERT_TRUE(staged.Begin());
  EXPECT_EQ(std::filesystem::path(staged.StagingPath()).parent_path(), folder_.Path());
  EXPECT_EQ(ReadText(staged.StagingPath()), "");
  WriteText(staged.StagingPath(), "words");
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_TRUE(staged.Commit());
  EXPECT_EQ(staged.Error(), 0);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "words");
}

TEST_F(StagedFileTest, WithoutACommitTheOldFileStaysAndNoOtherIsLeft) {
  WriteText(path_, "old");
  {
    StagedFile staged(path_);
    ASSERT_TRUE(staged.Begin());
    WriteText(staged.StagingPath(), "new");
    EXPECT_EQ(ReadText(path_), "old");
  }
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "old");
}

TEST_F(StagedFileTest, WithoutABeginNothingHappens) {
  { const StagedFile staged(path_); }
  EXPECT_EQ(folder_.Listing(), "");
}

TEST_F(StagedFileTest, ACommitOfNothingIsAnError) {
  WriteText(path_, "old");
  StagedFile staged(path_);
  EXPECT_FALSE(staged.Commit());
  EXPECT_EQ(staged.Error(), EBADF);
  EXPECT_EQ(ReadText(path_), "old");
}

TEST_F(StagedFileTest, BegunAgainItTakesAwayWhatWasStagedBefore) {
  const auto openDescriptors = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = openDescriptors();
  {
    StagedFile staged(path_);
    ASSERT_TRUE(staged.Begin());
    WriteText(staged.StagingPath(), "first");
    ASSERT_TRUE(staged.Begin());
    EXPECT_EQ(ReadText(staged.StagingPath()), "");
    EXPECT_EQ(openDescriptors(), before + 1);
    WriteText(staged.StagingPath(), "second");
    EXPECT_TRUE(staged.Commit());
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "second");
}

TEST_F(StagedFileTest, BegunAgainAfterAFailureItCanBeCommitted) {
  StagedFile staged(path_);
  {
    FileFailure failure;
    failure.FailCall(FileCall::kOpen, 1, EMFILE);
    EXPECT_FALSE(staged.Begin());
    EXPECT_EQ(staged.Error(), EMFILE);
    EXPECT_FALSE(staged.Commit());
    EXPECT_EQ(staged.Error(), EMFILE);
  }
  ASSERT_TRUE(staged.Begin());
  EXPECT_EQ(staged.Error(), 0);
  WriteText(staged.StagingPath(), "words");
  EXPECT_TRUE(staged.Commit());
  EXPECT_EQ(ReadText(path_), "words");
}

TEST_F(StagedFileTest, APathWithANulNamesNothing) {
  WriteText(path_, "old");
  EXPECT_EQ(Write(path_ + std::string("\0.dcm", 5), "new"), EINVAL);
  EXPECT_EQ(Write(std::string(1, '\0'), "new"), EINVAL);
  EXPECT_EQ(ReadText(path_), "old");
  EXPECT_EQ(folder_.Listing(), "file");
}

TEST_F(StagedFileTest, ReplacesWithThePermissionsOfTheOldFile) {
  const mode_t mask = ::umask(022);
  WriteText(path_, "old");
  for (const mode_t mode : {0600u, 0640u, 0666u, 0755u}) {
    ASSERT_EQ(::chmod(path_.c_str(), mode), 0);
    EXPECT_EQ(Write(path_, "new"), 0);
    EXPECT_EQ(ModeOf(path_), mode);
  }
  ::umask(mask);
}

/// As a user without rights who is in `groups`, the first one being that of new files. For children.
bool BecomeUserIn(std::initializer_list<gid_t> groups) {
  constexpr uid_t kUser = 4000;
  return ::setgroups(groups.size(), groups.begin()) == 0 && ::setgid(*groups.begin()) == 0 &&
         ::setuid(kUser) == 0;
}

struct Rights {
  uid_t user;
  gid_t group;
  mode_t mode;
  bool operator==(const Rights&) const = default;
};

void PrintTo(const Rights& rights, std::ostream* out) {
  *out << rights.user << ':' << rights.group << ' ' << std::oct << rights.mode;
}

Rights RightsOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return {status.st_uid, status.st_gid, status.st_mode & 07777};
}

TEST_F(StagedFileTest, TheGroupStaysOrHasNoMoreRightsThanAllOthers) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can become somebody else";
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0777), 0);
  const auto save = [this](std::initializer_list<gid_t> groups, const Rights& before) {
    WriteText(path_, "old");
    EXPECT_EQ(::chown(path_.c_str(), before.user, before.group), 0);
    EXPECT_EQ(::chmod(path_.c_str(), before.mode), 0);
    EXPECT_EQ(test::RunInChild([&] { return BecomeUserIn(groups) ? Write(path_, "new") : -1; }), 0);
    EXPECT_EQ(ReadText(path_), "new");
    const Rights after = RightsOf(path_);
    std::filesystem::remove(path_);
    return after;
  };
  // A member may give a file to the group.
  EXPECT_EQ(save({1000, 2345}, {4000, 2345, 0640}), (Rights{4000, 2345, 0640}));
  // Somebody else may not, and what the group might do is not what another group may do.
  EXPECT_EQ(save({1000}, {4000, 2345, 0640}), (Rights{4000, 1000, 0600}));
  EXPECT_EQ(save({1000}, {4000, 2345, 0664}), (Rights{4000, 1000, 0644}));
  // Nor may those whom the group shut out do more as some of all others.
  EXPECT_EQ(save({1000}, {4000, 2345, 0604}), (Rights{4000, 1000, 0600}));
  // Another's file becomes the writer's, who could write it by its group.
  EXPECT_EQ(save({1000, 2345}, {5000, 2345, 0660}), (Rights{4000, 2345, 0660}));
}

TEST_F(StagedFileTest, WhereTheRightsCannotBeAskedForTheGroupHasNoMoreThanAllOthers) {
  WriteText(path_, "old");
  for (int nth = 1; nth <= 2; ++nth) {
    ASSERT_EQ(::chmod(path_.c_str(), 0664), 0);
    FileFailure calls;
    calls.FailCall(FileCall::kMode, nth, EIO);
    EXPECT_EQ(Write(path_, "new"), 0);
    EXPECT_EQ(ModeOf(path_), 0644u) << nth;
  }
  // The look at the group is the last one before the first of these.
  ASSERT_EQ(::chmod(path_.c_str(), 0664), 0);
  int looks = 0;
  {
    FileFailure calls;
    calls.RunBefore(FileCall::kMode, 1, [&] { looks = calls.Calls(FileCall::kStat); });
    EXPECT_EQ(Write(path_, "new"), 0);
  }
  FileFailure calls;
  calls.FailCall(FileCall::kStat, looks, EIO);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(ModeOf(path_), 0644u);
}

TEST_F(StagedFileTest, WhereThereAreNoAccessListsTheModeStays) {
  WriteText(path_, "old");
  ASSERT_EQ(::chmod(path_.c_str(), 0664), 0);
  FileFailure calls;
  calls.FailCall(FileCall::kMode, 1, ENOTSUP);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(ModeOf(path_), 0664u);
}

TEST_F(StagedFileTest, TheSuperuserLeavesAFileToItsOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give a file away";
  const auto prepare = [this] {
    WriteText(path_, "old");
    EXPECT_EQ(::chown(path_.c_str(), 4000, 2345), 0);
    EXPECT_EQ(::chmod(path_.c_str(), 0640), 0);
  };
  prepare();
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(RightsOf(path_), (Rights{4000, 2345, 0640}));
  // Killed on the way, what he leaves is taken away by the next writer, whomever it belongs to by then.
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    prepare();
    const int ended = test::RunInChild([&] {
      FileFailure failure;
      failure.KillAtCall(nth);
      return Write(path_, "newer");
    });
    if (ended == 0) break;
    ASSERT_EQ(ended, -SIGKILL);
    EXPECT_EQ(RightsOf(path_), (Rights{4000, 2345, 0640}));
    EXPECT_EQ(Write(path_, "next"), 0);
    EXPECT_EQ(folder_.Listing(), "file");
  }
}

TEST_F(StagedFileTest, AFileThatCannotBeGivenAwayKeepsItsOtherRights) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can make a file of somebody else";
  WriteText(path_, "old");
  ASSERT_EQ(::chown(path_.c_str(), 4000, 0), 0);
  ASSERT_EQ(::chmod(path_.c_str(), 0664), 0);
  FileFailure calls;
  calls.FailCalls(FileCall::kMode, 4, 4, EPERM);  // list asked for, none to remove, mode, owner
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(RightsOf(path_), (Rights{0, 0, 0664}));
}

TEST_F(StagedFileTest, TheRightToRunAsOwnerOrGroupDoesNotPassToNewBytes) {
  WriteText(path_, "old");
  ASSERT_EQ(::chmod(path_.c_str(), 06755), 0);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(ModeOf(path_), 0755u);
}

/// An access list as the system stores it (acl(5), version 2): entries of kind, rights and number.
Bytes AccessList(std::uint8_t groupRights, std::uint8_t mask, std::uint32_t user,
                 std::uint8_t userRights) {
  Bytes list{2, 0, 0, 0};
  const auto add = [&list](std::uint8_t kind, std::uint8_t rights, std::uint32_t number) {
    list.insert(list.end(), {kind, 0, rights, 0});
    for (int shift = 0; shift < 32; shift += 8)
      list.push_back(static_cast<std::uint8_t>(number >> shift));
  };
  constexpr std::uint32_t kNobodyByNumber = 0xFFFFFFFF;
  add(0x01, 6, kNobodyByNumber);            // the owner
  add(0x02, userRights, user);              // a user by number
  add(0x04, groupRights, kNobodyByNumber);  // the group
  add(0x10, mask, kNobodyByNumber);
  add(0x20, 0, kNobodyByNumber);  // all others
  return list;
}

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr const char* kListForNewFiles = "system.posix_acl_default";

Bytes AccessListOf(const std::string& path) {
  Bytes list(256);
  const ssize_t size = ::getxattr(path.c_str(), kAccessList, list.data(), list.size());
  list.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return list;
}

bool SetList(const std::string& path, const char* name, const Bytes& list) {
  return ::setxattr(path.c_str(), name, list.data(), list.size(), 0) == 0;
}

TEST_F(StagedFileTest, TheAccessListStays) {
  const Bytes list = AccessList(0, 6, 5000, 6);
  WriteText(path_, "old");
  if (!SetList(path_, kAccessList, list)) GTEST_SKIP() << "no access lists here";
  EXPECT_EQ(ModeOf(path_), 0660u);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(AccessListOf(path_), list);
  EXPECT_EQ(ModeOf(path_), 0660u);
  // Where it cannot be set, the mask that looks like the rights of the group is not given to the group.
  FileFailure calls;
  calls.FailCall(FileCall::kMode, 2, ENOTSUP);
  EXPECT_EQ(Write(path_, "newer"), 0);
  EXPECT_EQ(AccessListOf(path_), Bytes{});
  EXPECT_EQ(ModeOf(path_), 0600u);
}

TEST_F(StagedFileTest, AListForNewFilesOfTheDirectoryDoesNotOpenTheOldFileToOthers) {
  WriteText(path_, "old");
  ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
  if (!SetList(folder_.Path(), kListForNewFiles, AccessList(4, 6, 5000, 6))) {
    GTEST_SKIP() << "no access lists here";
  }
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(AccessListOf(path_), Bytes{});
  EXPECT_EQ(ModeOf(path_), 0640u);
}

TEST_F(StagedFileTest, ANewFileHasThePermissionsThatTheMaskLeaves) {
  const mode_t mask = ::umask(027);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(ModeOf(path_), 0640u);
  ::umask(mask);
}

TEST_F(StagedFileTest, StagedBytesAreNotOpenToMoreReadersThanTheOldFile) {
  const mode_t mask = ::umask(0);
  WriteText(path_, "old");
  ASSERT_EQ(::chmod(path_.c_str(), 0600), 0);
  StagedFile staged(path_);
  ASSERT_TRUE(staged.Begin());
  EXPECT_EQ(ModeOf(staged.StagingPath()), 0600u);
  ::umask(mask);
}

TEST_F(StagedFileTest, ALinkStaysAndWhatItNamesIsReplaced) {
  std::filesystem::create_directory(folder_.Path() / "below");
  WriteText(folder_.File("below/target"), "old");
  std::filesystem::create_symlink("below/target", folder_.File("second"));
  std::filesystem::create_symlink("second", path_);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.File("second")));
  EXPECT_FALSE(std::filesystem::is_symlink(folder_.File("below/target")));
  EXPECT_EQ(ReadText(folder_.File("below/target")), "new");
}

TEST_F(StagedFileTest, ALinkToNothingStaysAndWhatItNamesIsMade) {
  std::filesystem::create_directory(folder_.Path() / "below");
  std::filesystem::create_symlink("below/target", path_);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  EXPECT_EQ(ReadText(folder_.File("below/target")), "new");
  const std::string elsewhere = folder_.File("elsewhere");
  std::filesystem::create_symlink(folder_.File("made"), elsewhere);
  EXPECT_EQ(Write(elsewhere, "absolute"), 0);
  EXPECT_EQ(ReadText(folder_.File("made")), "absolute");
}

TEST_F(StagedFileTest, ALinkToItselfIsAnError) {
  std::filesystem::create_symlink("file", path_);
  EXPECT_EQ(Write(path_, "new"), ELOOP);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
}

TEST_F(StagedFileTest, ADeviceIsWrittenDirectly) {
  StagedFile staged("/dev/null");
  ASSERT_TRUE(staged.Begin());
  EXPECT_EQ(staged.StagingPath(), "/dev/null");
  EXPECT_TRUE(staged.Commit());
  EXPECT_EQ(Write("/dev/null", "words"), 0);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_EQ(Write("/dev/full", "words"), ENOSPC);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(StagedFileTest, APipeIsWrittenDirectly) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  std::string got;
  std::thread reader([&] { got = ReadText(path_); });
  EXPECT_EQ(Write(path_, "words"), 0);
  reader.join();
  EXPECT_EQ(got, "words");
  EXPECT_TRUE(std::filesystem::is_fifo(path_));
}

TEST_F(StagedFileTest, PlacesThatNoFileCanTakeAreRefused) {
  EXPECT_EQ(Write(folder_.Path(), "x"), EISDIR);
  EXPECT_EQ(Write(folder_.File("none/file"), "x"), ENOENT);
  WriteText(path_, "old");
  EXPECT_EQ(Write(path_ + "/x", "x"), ENOTDIR);
  EXPECT_EQ(Write(folder_.File(std::string(300, 'n')), "x"), ENAMETOOLONG);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "old");
}

TEST_F(StagedFileTest, TheLongestNameThatAFileCanHaveCanBeWritten) {
  const std::string name(255, 'n');
  EXPECT_EQ(Write(folder_.File(name), "x"), 0);
  EXPECT_EQ(folder_.Listing(), name);
}

TEST_F(StagedFileTest, ANameRelativeToTheWorkingDirectoryIsFine) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Path());
  EXPECT_EQ(Write("file", "one"), 0);
  EXPECT_EQ(Write("file", "two"), 0);
  std::filesystem::current_path(before);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "two");
}

TEST_F(StagedFileTest, AWriteProtectedFileIsNotReplaced) {
  WriteText(path_, "old");
  ASSERT_EQ(::chmod(path_.c_str(), 0444), 0);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0777), 0);
  EXPECT_EQ(test::RunInChild([&] { return test::BecomeNobody() ? Write(path_, "new") : -1; }),
            EACCES);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "old");
  EXPECT_EQ(ModeOf(path_), 0444u);
}

TEST_F(StagedFileTest, ADirectoryWithoutRightsIsRefused) {
  WriteText(path_, "old");
  ASSERT_EQ(::chmod(path_.c_str(), 0666), 0);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0555), 0);
  EXPECT_EQ(test::RunInChild([&] { return test::BecomeNobody() ? Write(path_, "new") : -1; }),
            EACCES);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0700), 0);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "old");
}

TEST_F(StagedFileTest, AFullDiskAtAnyByteLeavesTheOldFileAlone) {
  const Bytes bytes = Pattern(64);
  for (std::uint64_t room = 0; room < bytes.size(); ++room) {
    WriteText(path_, "old");
    FileFailure disk;
    disk.FillDiskAfter(room);
    ASSERT_EQ(Write(path_, bytes), ENOSPC) << room;
    ASSERT_EQ(ReadText(path_), "old") << room;
    ASSERT_EQ(folder_.Listing(), "file") << room;
  }
  FileFailure disk;
  disk.FillDiskAfter(bytes.size());
  EXPECT_EQ(Write(path_, bytes), 0);
  EXPECT_EQ(ReadBytes(path_), bytes);
}

/// How many file calls one write makes when nothing fails.
int CallsOfAWrite(const std::string& path) {
  const FileFailure calls;
  EXPECT_EQ(Write(path, "counted"), 0);
  return calls.Calls();
}

TEST_F(StagedFileTest, EachCallThatFailsLeavesTheOldOrTheNewFileWholeAndNoOther) {
  WriteText(path_, "old");
  const int calls = CallsOfAWrite(path_);
  EXPECT_GE(calls, 9) << "look, create, lock, open, write, close, sync, rename, close";
  int failed = 0;
  for (const int error : {EIO, ENOSPC, EACCES, EMFILE, EROFS}) {
    for (int nth = 1; nth <= calls; ++nth) {
      SCOPED_TRACE(testing::Message() << "call " << nth << ", error " << error);
      WriteText(path_, "old");
      int answer = 0;
      {
        FileFailure failure;
        failure.FailCall(nth, error);
        answer = Write(path_, "new words");
      }
      EXPECT_TRUE(answer == 0 || answer == error);
      EXPECT_EQ(ReadText(path_), answer == 0 ? "new words" : "old");
      EXPECT_EQ(folder_.Listing(), "file");
      failed += answer != 0 ? 1 : 0;
    }
  }
  // A lock that cannot be had and the last close, of a file that is in place already, are the calls that may fail unseen; and
  // a failed look at the new staging file is made good by a second try. Behind a failure of the three that ask for the group
  // and the access list the file only has fewer rights.
  EXPECT_GE(failed, 5 * (calls - 6));
}

TEST_F(StagedFileTest, EachCallThatFailsWhileANewFileIsMadeLeavesItOrNothing) {
  const int calls = CallsOfAWrite(path_);
  for (int nth = 1; nth <= calls; ++nth) {
    SCOPED_TRACE(nth);
    std::filesystem::remove(path_);
    int answer = 0;
    {
      FileFailure failure;
      failure.FailCall(nth, EIO);
      answer = Write(path_, "new words");
    }
    EXPECT_EQ(folder_.Listing(), answer == 0 ? "file" : "");
    if (answer == 0) {
      EXPECT_EQ(ReadText(path_), "new words");
    }
  }
}

TEST_F(StagedFileTest, ALookAtTheOldFileThatFailsDoesNotLoosenItsPermissions) {
  const mode_t mask = ::umask(022);
  WriteText(path_, "old");
  ASSERT_EQ(::chmod(path_.c_str(), 0600), 0);
  for (int nth = 1; nth <= 4; ++nth) {
    FileFailure failure;
    failure.FailCall(FileCall::kStat, nth, EIO);
    Write(path_, "new");
    EXPECT_EQ(ModeOf(path_), 0600u) << nth;
  }
  ::umask(mask);
}

TEST_F(StagedFileTest, CallsThatSignalsBreakAreRepeated) {
  WriteText(path_, "old");
  const Bytes bytes = Pattern(5000);
  FileFailure failure;
  failure.InterruptEveryCall();
  failure.LimitCount(FileCall::kWrite, 100);
  EXPECT_EQ(Write(path_, bytes), 0);
  EXPECT_EQ(ReadBytes(path_), bytes);
  EXPECT_EQ(folder_.Listing(), "file");
}

TEST_F(StagedFileTest, WhatAKilledWriterLeftIsCleanedByTheNextOne) {
  WriteText(path_, "old");
  const int ended = test::RunInChild([&] {
    StagedFile staged(path_);
    if (!staged.Begin()) return 1;
    WriteText(staged.StagingPath(), "half");
    ::kill(::getpid(), SIGKILL);
    return 2;
  });
  EXPECT_EQ(ended, -SIGKILL);
  EXPECT_NE(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "old");
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "new");
}

TEST_F(StagedFileTest, AWriterKilledAtAnyCallLeavesTheOldOrTheNewFileWhole) {
  const Bytes before = Pattern(3000, 1);
  const Bytes after = Pattern(5000, 2);
  int killed = 0;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    test::WriteBytes(path_, before);
    const int ended = test::RunInChild([&] {
      FileFailure failure;
      failure.LimitCount(FileCall::kWrite, 1000);
      failure.KillAtCall(nth);
      return Write(path_, after);
    });
    const Bytes found = ReadBytes(path_);
    if (ended == 0) {
      EXPECT_EQ(found, after);
      break;
    }
    ASSERT_EQ(ended, -SIGKILL);
    ++killed;
    EXPECT_TRUE(found == before || found == after);
    EXPECT_EQ(Write(path_, "next"), 0);
    EXPECT_EQ(folder_.Listing(), "file");
    EXPECT_EQ(ReadText(path_), "next");
  }
  EXPECT_GE(killed, 13) << "five writes and at least eight other calls";
}

TEST_F(StagedFileTest, AFileOfSomebodyElseUnderTheStagingNameIsLeftAlone) {
  std::string stagingName;
  {
    StagedFile staged(path_);
    ASSERT_TRUE(staged.Begin());
    stagingName = staged.StagingPath();
  }
  std::filesystem::create_directory(stagingName);
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(ReadText(path_), "new");
  EXPECT_TRUE(std::filesystem::is_directory(stagingName));
  std::filesystem::remove(stagingName);
  // A link is not followed: what it names keeps its bytes.
  WriteText(folder_.File("other"), "other");
  std::filesystem::create_symlink("other", stagingName);
  EXPECT_EQ(Write(path_, "newer"), 0);
  EXPECT_EQ(ReadText(folder_.File("other")), "other");
  EXPECT_TRUE(std::filesystem::is_symlink(stagingName));
}

TEST_F(StagedFileTest, AStagingFileOfAnotherUserIsLeftAlone) {
  // Only the superuser can make one for somebody else; any other user's is an abandoned one of his own.
  const bool isOfAnother = ::geteuid() == 0;
  std::string stagingName;
  {
    StagedFile staged(path_);
    ASSERT_TRUE(staged.Begin());
    stagingName = staged.StagingPath();
  }
  WriteText(stagingName, "not ours");
  ASSERT_EQ(::chmod(stagingName.c_str(), 0666), 0);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0777), 0);
  EXPECT_EQ(test::RunInChild([&] { return test::BecomeNobody() ? Write(path_, "new") : -1; }), 0);
  EXPECT_EQ(ReadText(path_), "new");
  EXPECT_EQ(std::filesystem::exists(stagingName), isOfAnother);
  if (isOfAnother) {
    EXPECT_EQ(ReadText(stagingName), "not ours");
  }
}

TEST_F(StagedFileTest, AFolderIsNoPlaceForAFile) {
  StagedFile staged(folder_.Path());
  EXPECT_FALSE(staged.Begin());
  EXPECT_EQ(staged.Error(), EISDIR);
}

TEST_F(StagedFileTest, TwoWritersOfOnePlaceDoNotDisturbEachOther) {
  StagedFile first(path_);
  StagedFile second(path_);
  ASSERT_TRUE(first.Begin());
  ASSERT_TRUE(second.Begin());
  EXPECT_NE(first.StagingPath(), second.StagingPath());
  WriteText(first.StagingPath(), "first");
  WriteText(second.StagingPath(), "second");
  EXPECT_TRUE(second.Commit());
  EXPECT_EQ(ReadText(path_), "second");
  EXPECT_TRUE(first.Commit());
  EXPECT_EQ(ReadText(path_), "first");
  EXPECT_EQ(folder_.Listing(), "file");
}

TEST_F(StagedFileTest, MoreWritersOfOnePlaceThanThereAreNamesForAreRefused) {
  std::vector<std::unique_ptr<StagedFile>> writers;
  for (int writer = 0; writer < 64; ++writer) {
    writers.push_back(std::make_unique<StagedFile>(path_));
    ASSERT_TRUE(writers.back()->Begin()) << writer;
  }
  StagedFile oneMore(path_);
  EXPECT_FALSE(oneMore.Begin());
  EXPECT_EQ(oneMore.Error(), EBUSY);
  writers.pop_back();
  StagedFile later(path_);
  EXPECT_TRUE(later.Begin());
}

// The other writer does in a moment what it may do between two calls of ours: clean up what was abandoned, and begin.
TEST_F(StagedFileTest, AStagingFileThatTookTheNameMeanwhileIsNotTakenForTheAbandonedOne) {
  std::string stagingName;
  {
    StagedFile staged(path_);
    ASSERT_TRUE(staged.Begin());
    stagingName = staged.StagingPath();
  }
  WriteText(stagingName, "abandoned");
  int othersFile = -1;
  FileFailure calls;
  calls.RunBefore(FileCall::kLock, 1, [&] {
    ::unlink(stagingName.c_str());
    othersFile = ::open(stagingName.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
    ::flock(othersFile, LOCK_EX | LOCK_NB);
  });
  StagedFile ours(path_);
  ASSERT_TRUE(ours.Begin());
  struct stat others {};
  ASSERT_EQ(::fstat(othersFile, &others), 0);
  EXPECT_EQ(InodeOf(stagingName), others.st_ino);
  EXPECT_NE(ours.StagingPath(), stagingName);
  ::close(othersFile);
}

// Another writer may look at the new file before its lock is there; it is then about to remove it.
TEST_F(StagedFileTest, AStagingFileThatAnotherWriterLockedFirstIsNotUsed) {
  int held = -1;
  std::string heldName;
  FileFailure calls;
  calls.RunBefore(FileCall::kLock, 1, [&] {
    heldName = folder_.File(folder_.Listing());
    held = ::open(heldName.c_str(), O_RDONLY);
    EXPECT_EQ(::flock(held, LOCK_EX | LOCK_NB), 0);
  });
  StagedFile ours(path_);
  ASSERT_TRUE(ours.Begin());
  EXPECT_NE(ours.StagingPath(), heldName);
  ::close(held);
}

TEST_F(StagedFileTest, AStagingFileRemovedBeforeItsLockIsMadeAgain) {
  int removed = 0;
  FileFailure calls;
  calls.RunBefore(FileCall::kLock, 1, [&] {
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
      removed += ::unlink(entry.path().c_str()) == 0 ? 1 : 0;
    }
  });
  EXPECT_EQ(Write(path_, "new"), 0);
  EXPECT_EQ(removed, 1);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(ReadText(path_), "new");
}

TEST_F(StagedFileTest, WritersInSeveralProcessesLeaveOneWholeFile) {
  constexpr std::uint32_t kWriters = 4;
  constexpr int kRounds = 100;
  constexpr std::size_t kSize = 20000;
  ASSERT_EQ(Write(path_, Pattern(kSize, 0)), 0);
  std::vector<std::unique_ptr<ChildProcess>> writers;
  for (std::uint32_t writer = 0; writer < kWriters; ++writer) {
    writers.push_back(std::make_unique<ChildProcess>([&, writer] {
      for (int round = 0; round < kRounds; ++round) {
        if (Write(path_, Pattern(kSize, writer)) != 0) return 1;
      }
      return 0;
    }));
  }
  std::vector<Bytes> possible;
  for (std::uint32_t writer = 0; writer < kWriters; ++writer) {
    possible.push_back(Pattern(kSize, writer));
  }
  for (int look = 0; look < 200; ++look) {
    ASSERT_THAT(possible, testing::Contains(ReadBytes(path_))) << look;
  }
  for (const auto& writer : writers) EXPECT_EQ(writer->Wait(), 0);
  EXPECT_THAT(possible, testing::Contains(ReadBytes(path_)));
  EXPECT_EQ(folder_.Listing(), "file");
}

TEST_F(StagedFileTest, WritersThatAreKilledAtRandomDoNotHarmTheOthers) {
  constexpr std::size_t kSize = 20000;
  const Bytes good = Pattern(kSize, 1);
  ASSERT_EQ(Write(path_, good), 0);
  ChildProcess steady([&] {
    for (int round = 0; round < 200; ++round) {
      if (Write(path_, good) != 0) return 1;
    }
    return 0;
  });
  for (int nth = 1; nth <= 60; ++nth) {
    test::RunInChild([&] {
      FileFailure failure;
      failure.KillAtCall(1 + nth % 14);
      return Write(path_, good);
    });
    ASSERT_EQ(ReadBytes(path_), good);
  }
  EXPECT_EQ(steady.Wait(), 0);
  // Two writers may have been killed at one time; each later one cleans the name that it takes.
  StagedFile first(path_);
  EXPECT_TRUE(first.Begin());
  EXPECT_EQ(ReadBytes(path_), good);
}

TEST_F(StagedFileTest, TheBytesAreOnTheMediumBeforeTheyMoveToTheirPlace) {
  for (const Existing existing : {Existing::kReplace, Existing::kKeep}) {
    StagedFile file(existing == Existing::kKeep ? path_ + "2" : path_, existing);
    ASSERT_TRUE(file.Begin());
    FileFailure calls;
    int syncedBefore = 0;
    const FileCall move = existing == Existing::kKeep ? FileCall::kLink : FileCall::kRename;
    calls.RunBefore(move, 1, [&] { syncedBefore = calls.Calls(FileCall::kSync); });
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(calls.Calls(move), 1);
    EXPECT_EQ(syncedBefore, 1);
  }
}

TEST_F(StagedFileTest, BytesThatDoNotReachTheMediumDoNotMove) {
  WriteText(path_, "old");
  StagedFile file(path_);
  ASSERT_TRUE(file.Begin());
  WriteText(file.StagingPath(), "new");
  FileFailure calls;
  calls.FailCall(FileCall::kSync, 1, EIO);
  EXPECT_FALSE(file.Commit());
  EXPECT_EQ(file.Error(), EIO);
  EXPECT_EQ(calls.Calls(FileCall::kRename), 0);
  EXPECT_EQ(ReadText(path_), "old");
  EXPECT_EQ(folder_.Listing(), "file");
}

}  // namespace
}  // namespace tessaret
