// Making objects by name, from start to end.
#include "tessaret/library.hpp"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "facade/class_ids.h"
#include "facade/module.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/bytes.h"
#include "support/child_process.h"
#include "support/fork_amid.h"
#include "support/temp_folder.h"
#include "tessaret/idcm_dictionary.hpp"
#include "tessaret/idcm_object.hpp"
#include "tessaret/idcm_options.hpp"

namespace tessaret {
namespace {

struct KnownClass {
  const char* name;
  const char* interface;
  const char* events;
  ClassId id;
};

const KnownClass kKnown[] = {
    {"Tessaret.DCMObject", "IDCMObject", "_IDCMObjectEvents", class_id::kDCMObject},
    {"Tessaret.DcmOblique", "IDCMOblique", "_IDCMObliqueEvents", class_id::kDcmOblique},
    {"Tessaret.DCMDicomDir", "IDCMDicomDir", "_IDCMDicomDirEvents", class_id::kDCMDicomDir},
    {"Tessaret.ViewParameter", "IViewParameters", "", class_id::kViewParameter},
    {"Tessaret.DCMOptions", "IDCMOptions", "_IDCMOptionsEvents", class_id::kDCMOptions},
    {"Tessaret.ImageModule", "IImageModule", "", class_id::kImageModule},
    {"Tessaret.DcmDictionary", "IDcmDictionary", "", class_id::kDcmDictionary},
    {"Tessaret.DCMVolume", "IDCMVolume", "_IDCMVolumeEvents", class_id::kDCMVolume},
    {"Tessaret.DcmQueryRetrieve", "IDcmQueryRetrieve", "_IDcmQueryRetrieveEvents",
     class_id::kDcmQueryRetrieve},
    {"Tessaret.XDIDomain", "IXDIDomain", "", class_id::kXDIDomain},
    {"Tessaret.XDIConsumer", "IXDIConsumer", "_IXDIConsumerEvents", class_id::kXDIConsumer},
    {"Tessaret.DcmCStore", "IDcmCStore", "_IDcmCStoreEvents", class_id::kDcmCStore},
};

TEST(Library, HasTheTwelveClassesWithTheirInterfacesAndEvents) {
  ASSERT_EQ(AllClasses().size(), std::size(kKnown));
  for (std::size_t at = 0; at < std::size(kKnown); ++at) {
    const ClassRow& row = AllClasses()[at];
    EXPECT_EQ(row.name, kKnown[at].name);
    EXPECT_EQ(row.interface, kKnown[at].interface);
    EXPECT_EQ(row.events, kKnown[at].events);
    EXPECT_EQ(row.id, kKnown[at].id);
    for (std::size_t other = 0; other < at; ++other) EXPECT_FALSE(row.id == AllClasses()[other].id);
  }
}

TEST(Library, MakesAnObjectByEitherNameOrIdentifier) {
  EXPECT_TRUE(Create<IDcmDictionary>("Tessaret.DcmDictionary"));
  EXPECT_TRUE(Create<IDcmDictionary>("Tessaret.DcmDictionary.1"));
  EXPECT_TRUE(Create<IDispatch>("tessaret.dcmdictionary"));
  Ref<IDCMOptions> options;
  EXPECT_EQ(tessaret_create_object_by_id(&class_id::kDCMOptions, &IDCMOptions::kId, nullptr,
                                         reinterpret_cast<void**>(options.Receive())),
            kOk);
  EXPECT_TRUE(options);
}

TEST(Library, ClassesThatAreStillToComeSaySo) {
  for (const KnownClass& known : kKnown) {
    const std::string name = known.name;
    if (name == "Tessaret.DCMObject" || name == "Tessaret.DCMOptions" ||
        name == "Tessaret.DcmDictionary" || name == "Tessaret.DcmCStore")
      continue;
    Ref<IObject> object;
    EXPECT_EQ(Create(known.name, object), static_cast<Status>(0x80004001u)) << known.name;
    EXPECT_FALSE(object);
    EXPECT_EQ(LastError().source, known.name);
    EXPECT_EQ(LastError().text, "This class is not available in this version");
  }
}

TEST(Library, RefusesWhatItDoesNotHave) {
  Ref<IDCMOptions> options;
  EXPECT_EQ(Create("Tessaret.DcmDictionary", options), kNoInterface);
  EXPECT_FALSE(options);
  EXPECT_EQ(LastError().source, "Tessaret.DcmDictionary");
  EXPECT_EQ(LastError().text, "The class has no such interface");
  EXPECT_EQ(Create("Tessaret.Nothing", options), kClassNotRegistered);
  EXPECT_EQ(LastError().text, "There is no such class");
  EXPECT_EQ(Create("", options), kClassNotRegistered);
  void* object = &options;
  EXPECT_EQ(tessaret_create_object(nullptr, &IObject::kId, nullptr, &object), kPointer);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(tessaret_create_object(nullptr, &IObject::kId, nullptr, nullptr), kPointer);
  object = &options;
  EXPECT_EQ(tessaret_create_object("Tessaret.DCMOptions", nullptr, nullptr, &object), kPointer);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(tessaret_create_object("Tessaret.DCMOptions", &IObject::kId, nullptr, nullptr),
            kPointer);
  object = &options;
  EXPECT_EQ(tessaret_create_object_by_id(nullptr, &IObject::kId, nullptr, &object), kPointer);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(tessaret_create_object_by_id(nullptr, &IObject::kId, nullptr, nullptr), kPointer);
  const ClassId unknown{1, 2};
  EXPECT_EQ(tessaret_create_object_by_id(&unknown, &IObject::kId, nullptr, &object),
            kClassNotRegistered);
}

TEST(Library, MayGoWhenNoObjectIsLeft) {
  EXPECT_TRUE(CanUnload());
  {
    const auto dictionary = Create<IDcmDictionary>("Tessaret.DcmDictionary");
    EXPECT_FALSE(CanUnload());
  }
  EXPECT_TRUE(CanUnload());
  {
    const LibraryLock lock;
    EXPECT_FALSE(CanUnload());
  }
  EXPECT_TRUE(CanUnload());
}

TEST(Library, WithoutMemoryThereIsNoObject) {
  ASSERT_TRUE(Create<IDcmDictionary>("Tessaret.DcmDictionary"));
  Ref<IDcmDictionary> dictionary;
  Status status = kOk;
  {
    const test::AllocationFailure failure(1);
    status = Create("Tessaret.DcmDictionary", dictionary);
  }
  EXPECT_EQ(status, kOutOfMemory);
  EXPECT_FALSE(dictionary);
  EXPECT_EQ(LastError().text, "Not enough memory");
}

/// Counts its references, and has a part.
class Whole final : public IObject {
 public:
  Status QueryInterface(const InterfaceId& id, void** object) override {
    if (!(id == IObject::kId)) return part->QueryInterface(id, object);
    *object = static_cast<IObject*>(this);
    AddRef();
    return kOk;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }

  std::uint32_t references = 1;
  Ref<IObject> part;
};

TEST(Library, EveryClassCanBeAPartOfAnotherObject) {
  int made = 0;
  for (const KnownClass& known : kKnown) {
    Whole whole;
    void** part = reinterpret_cast<void**>(whole.part.Receive());
    const Status status = tessaret_create_object(known.name, &IObject::kId, &whole, part);
    if (status == kNotImplemented) continue;
    ++made;
    ASSERT_EQ(status, kOk) << known.name;
    EXPECT_EQ(whole.references, 1u) << known.name;
    {
      const auto dispatch = whole.part.As<IDispatch>();
      EXPECT_EQ(whole.references, 2u) << known.name;
      EXPECT_STREQ(dispatch->Describe()->name, known.interface);
      EXPECT_EQ(dispatch.As<IObject>().Get(), &whole) << known.name;
    }
    EXPECT_EQ(whole.references, 1u) << known.name;
    void* other = &whole;
    EXPECT_EQ(tessaret_create_object(known.name, &IDispatch::kId, &whole, &other), kNoAggregation);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(LastError().source, known.name);
    EXPECT_EQ(LastError().text, "A part of another object is asked for as an object only");
  }
  EXPECT_GE(made, 3);
  EXPECT_TRUE(CanUnload());
}

TEST(Library, SeveralThreadsMayMakeObjects) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([] {
      for (int turn = 0; turn < 1000; ++turn)
        EXPECT_TRUE(Create<IDcmDictionary>("Tessaret.DcmDictionary"));
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(CanUnload());
}

TEST(Library, MakesObjectsInAChildOfForkWhateverOtherThreadsDo) {
  if (test::kInstrumented) GTEST_SKIP() << test::kForkUnderSanitizer;
  ASSERT_EQ(StartLibrary(), kOk);
  std::atomic<bool> isOver = false;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&] {
      while (!isOver) EXPECT_TRUE(Create<IDcmDictionary>("Tessaret.DcmDictionary"));
    });
  }
  for (int turn = 0; turn < 100 && !HasFailure(); ++turn) {
    EXPECT_EQ(test::RunInChild([] {
                ::alarm(20);
                return Create<IDcmDictionary>("Tessaret.DcmDictionary") ? 0 : 1;
              }),
              0)
        << turn;
  }
  isOver = true;
  for (std::thread& thread : threads) thread.join();
}

/// Tries to make each class where there are no dictionaries; 0 where that fails as it should.
int TryWithoutDictionaries() {
  const test::TempFolder folder;
  ::setenv("TESSARET_DATA_DIR", folder.Path().c_str(), 1);
  for (const KnownClass& known : kKnown) {
    Ref<IObject> object;
    if (Create(known.name, object) != kClassNotAvailable || object) return 1;
    if (LastError().text != "Error reading [" + folder.File("dicom-dict.txt") + "]") return 2;
  }
  return 0;
}

/// Starts the library where one dictionary is broken; 0 where it says so itself, and nobody else does.
int StartWith(const char* tags, const char* uids, const std::string& expected) {
  const test::TempFolder folder;
  if (tags != nullptr) test::WriteText(folder.File("dicom-dict.txt"), tags);
  if (uids != nullptr) test::WriteText(folder.File("uid-dict.txt"), uids);
  ::setenv("TESSARET_DATA_DIR", folder.Path().c_str(), 1);
  if (StartLibrary() != kClassNotAvailable) return 1;
  if (LastError().text != "Error reading [" + folder.Path().string() + '/' + expected) return 2;
  // Once more, and as an object hears it.
  if (StartLibrary() != kClassNotAvailable) return 3;
  return Create<IDcmDictionary>("Tessaret.DcmDictionary") ? 4 : 0;
}

TEST(LibraryDeathTest, StartsWithoutAWordOnStandardErrorAndSaysAllThatIsKnown) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  constexpr const char* kTags = "\n{0x0010 0x0010 PN \"Name\"}\n";
  const auto ends = testing::ExitedWithCode(0);
  EXPECT_EXIT(std::exit(StartWith(nullptr, nullptr, "dicom-dict.txt]: No such file or directory")),
              ends, "^$");
  EXPECT_EXIT(std::exit(StartWith("\n{0x0010 0x0010 P \"Name\"}\n", nullptr,
                                  "dicom-dict.txt]: line 2: a type needs two letters")),
              ends, "^$");
  EXPECT_EXIT(std::exit(StartWith(kTags, nullptr, "uid-dict.txt]: No such file or directory")),
              ends, "^$");
  EXPECT_EXIT(std::exit(StartWith(kTags, "?\n", "uid-dict.txt]: Error reading UID file at line 1")),
              ends, "^$");
}

TEST(Library, IsStartedByAnObjectAsWell) {
  EXPECT_EQ(StartLibrary(), kOk);
  EXPECT_TRUE(Create<IDcmDictionary>("Tessaret.DcmDictionary"));
  EXPECT_EQ(StartLibrary(), kOk);
}

TEST(Library, GivesUpFilesWhenToldSoAndTakesThemUpAgain) {
  const test::TempFolder folder;
  const std::string path = folder.File("a.dcm");
  const auto object = Create<IDCMObject>("Tessaret.DCMObject");
  ASSERT_EQ(object->PutVRRawString(0x0010, 0x0010, "PN", "Doe^John"), kOk);
  ASSERT_EQ(object->Save(path), kOk);
  const auto before = test::ReadText(path);
  CancelFiles(true);
  EXPECT_EQ(object->Save(path), kException);
  EXPECT_EQ(LastError().text, "Operation canceled");
  const auto other = Create<IDCMObject>("Tessaret.DCMObject");
  EXPECT_EQ(other->Load(path, VariantBool(true)), kException);
  EXPECT_EQ(LastError().text, "Operation canceled");
  CancelFiles(false);
  EXPECT_EQ(test::ReadText(path), before);
  EXPECT_EQ(other->Load(path, VariantBool(true)), kOk);
  // Nothing half done is left.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

TEST(LibraryDeathTest, WithoutItsDictionariesItHasNoClasses) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(TryWithoutDictionaries()), testing::ExitedWithCode(0),
              "Error Tessaret: Error reading \\[.*dicom-dict.txt\\]");
}

/// Starts the library with one allocation or another failing; 0 where it says so each time, and starts when there is memory.
int StartWithoutMemory() {
  for (std::uint64_t nth = 1;; nth *= 2) {
    const test::AllocationFailure failure(nth);
    Ref<IDcmDictionary> object;
    const Status status = Create("Tessaret.DcmDictionary", object);
    if (!failure.Happened()) return status == kOk && nth > 8 ? 0 : 1;
    if (status != kOutOfMemory || object) return 2;
    if (LastError().text != "Not enough memory" || !CanUnload()) return 3;
  }
}

TEST(LibraryDeathTest, WithoutMemoryItStartsLater) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(StartWithoutMemory()), testing::ExitedWithCode(0), "");
}

/// Forks over and over while another thread starts the library; 0 where every child can have it.
int ForkAmidTheStart() {
  std::atomic<bool> isStarted = false;
  std::atomic<bool> begins = false;
  std::thread starter([&] {
    begins = true;
    StartLibrary();
    isStarted = true;
  });
  while (!begins) std::this_thread::yield();
  int answer = 0;
  while (answer == 0 && !isStarted) {
    answer = test::RunInChild([] {
      ::alarm(20);
      return Create<IDCMOptions>("Tessaret.DCMOptions") ? 0 : 1;
    });
  }
  starter.join();
  return answer;
}

TEST(LibraryDeathTest, AChildThatIsForkedAmidTheStartHasItTooLater) {
  if (test::kInstrumented) GTEST_SKIP() << test::kForkUnderSanitizer;
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(ForkAmidTheStart()), testing::ExitedWithCode(0), "");
}

/// Forks over and over while other threads use the options for the first time; 0 where every child can.
int ForkAmidTheFirstOptions() {
  // Settings that take a while to read.
  const test::TempFolder folder;
  std::filesystem::create_directory(folder.File("tessaret"));
  std::string settings;
  for (int line = 0; line < 200000; ++line) settings += "a=1\n";
  test::WriteText(folder.File("tessaret/settings.conf"), settings);
  ::setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
  if (StartLibrary() != kOk) return 1;
  const int stuck = test::FirstStuckChild(
      20, [] { const auto options = Create<IDCMOptions>("Tessaret.DCMOptions"); });
  return stuck == -1 ? 0 : 2;
}

TEST(LibraryDeathTest, AChildThatIsForkedAmidTheFirstUseOfTheOptionsHasThem) {
  if (test::kInstrumented) GTEST_SKIP() << test::kForkUnderSanitizer;
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(ForkAmidTheFirstOptions()), testing::ExitedWithCode(0), "");
}

/// Asks for the library while its files are given up, and again; 0 where it starts the second time.
int StartWhileCancelled() {
  CancelFiles(true);
  Ref<IDcmDictionary> dictionary;
  for (const bool byObject : {true, false}) {
    const Status status = byObject ? Create("Tessaret.DcmDictionary", dictionary) : StartLibrary();
    if (status != kClassNotAvailable || dictionary || !CanUnload()) return 1;
    if (!LastError().text.ends_with("dicom-dict.txt]: Operation canceled")) return 2;
  }
  CancelFiles(false);
  if (StartLibrary() != kOk) return 3;
  return Create("Tessaret.DcmDictionary", dictionary) == kOk ? 0 : 4;
}

TEST(LibraryDeathTest, AfterAStartThatWasCancelledItStartsLater) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(StartWhileCancelled()), testing::ExitedWithCode(0), "^$");
}

/// A thread that is to end asks for the first object where there are no dictionaries; 0 where it gets its answer first.
int TryWithoutDictionariesWhileCancelled() {
  const test::TempFolder folder;
  ::setenv("TESSARET_DATA_DIR", folder.Path().c_str(), 1);
  static Status status = kOk;
  const auto create = [](void*) -> void* {
    ::pthread_cancel(::pthread_self());
    void* object = nullptr;
    status = tessaret_create_object("Tessaret.DCMOptions", &IObject::kId, nullptr, &object);
    ::pthread_testcancel();
    return nullptr;
  };
  pthread_t thread{};
  void* answer = nullptr;
  if (::pthread_create(&thread, nullptr, create, nullptr) != 0) return 1;
  if (::pthread_join(thread, &answer) != 0 || answer != PTHREAD_CANCELED) return 2;
  return status == kClassNotAvailable ? 0 : 3;
}

TEST(LibraryDeathTest, AThreadThatIsToEndIsToldThatThereAreNoDictionaries) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(TryWithoutDictionariesWhileCancelled()), testing::ExitedWithCode(0),
              "Error Tessaret: Error reading \\[.*dicom-dict.txt\\]");
}

/// The same where nobody reads what is written to standard error.
int TryWithoutDictionariesAndReaders() {
  std::signal(SIGPIPE, SIG_DFL);
  int ends[2];
  if (::pipe(ends) != 0 || ::close(ends[0]) != 0 || ::dup2(ends[1], STDERR_FILENO) == -1) return 9;
  return TryWithoutDictionaries();
}

TEST(LibraryDeathTest, WhereNobodyReadsStandardErrorItHasNoClassesAllTheSame) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(TryWithoutDictionariesAndReaders()), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tessaret
