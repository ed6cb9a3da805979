// The queue of files behind the public interface, and the node that it sends them to.
#include <chrono>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "facade/interface_listing.h"
#include "services/store_files.h"
#include "services/store_provider.h"
#include "support/allocation_failure.h"
#include "support/temp_folder.h"
#include "tessaret/tessaret.hpp"

namespace tessaret::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

#define EXPECT_STORE_FAILS_WITH(status, words)           \
  do {                                                   \
    EXPECT_EQ((status), kException);                     \
    EXPECT_EQ(LastError().text, (words));                \
    EXPECT_EQ(LastError().source, "Tessaret.DcmCStore"); \
  } while (false)

/// Lives on the stack, longer than its connection.
class Listening : public _IDcmCStoreEvents {
 public:
  Status QueryInterface(const InterfaceId& id, void** object) override {
    const bool isOurs = id == IObject::kId || id == _IDcmCStoreEvents::kId;
    *object = isOurs ? static_cast<_IDcmCStoreEvents*>(this) : nullptr;
    return isOurs ? kOk : kNoInterface;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
};

/// Writes down what it hears.
class Sink final : public Listening {
 public:
  Status SopSent(const String& FileName, std::int16_t Idx) override {
    return Hear("sent " + FileName.Utf8() + " " + std::to_string(Idx));
  }
  Status SopError(const String& FileName, std::int16_t Idx, const String& Message) override {
    return Hear("error " + FileName.Utf8() + " " + std::to_string(Idx) + " " + Message.Utf8());
  }
  Status Finished(std::int16_t TotSent, std::int16_t TotErrors) override {
    return Hear("finished " + std::to_string(TotSent) + " " + std::to_string(TotErrors));
  }

  std::vector<std::string> lines;
  std::function<void()> then;
  Status answer = kOk;

 private:
  Status Hear(const std::string& line) {
    EXPECT_EQ(std::this_thread::get_id(), thread_);
    lines.push_back(line);
    if (then) then();
    return answer;
  }
  const std::thread::id thread_ = std::this_thread::get_id();
};

/// Counts what it hears, before it needs memory for anything.
class Counter final : public Listening {
 public:
  Status SopSent(const String&, std::int16_t) override { return Count(files); }
  Status SopError(const String&, std::int16_t, const String& Message) override {
    Count(files);
    if (Message.Utf8().ends_with("]: Not enough memory")) ++lacks;
    return kOk;
  }
  Status Finished(std::int16_t, std::int16_t) override { return Count(ends); }

  int files = 0;
  int lacks = 0;
  int ends = 0;

 private:
  static Status Count(int& counted) {
    ++counted;
    return kOk;
  }
};

class CStore : public testing::Test {
 protected:
  CStore() { EXPECT_EQ(store_.As<IEventSource>()->Advise(&sink_, &cookie_), kOk); }
  ~CStore() override {
    if (!store_) return;
    EXPECT_EQ(store_.As<IEventSource>()->Unadvise(cookie_), kOk);
  }

  std::string Add(const std::string& name, const Bytes& content,
                  const String& sopClass = kCTStorage) {
    const std::string path = folder_.File(name);
    WriteBytes(path, content);
    EXPECT_EQ(store_->AddFile(path, sopClass), kOk);
    return path;
  }
  Status Send(const std::string& port, std::int32_t timeoutSecs = 20) {
    return store_->SendFiles("127.0.0.1", port, "HERE", "THERE", timeoutSecs);
  }
  std::int16_t NumFiles() {
    std::int16_t count = -7;
    EXPECT_EQ(store_->get_NumFiles(&count), kOk);
    return count;
  }
  std::int16_t SentFiles() {
    std::int16_t count = -7;
    EXPECT_EQ(store_->get_SentFiles(&count), kOk);
    return count;
  }
  std::int32_t ResponseStatus() {
    std::int32_t status = -7;
    EXPECT_EQ(store_.As<IDcmStoreResponse>()->get_ResponseStatus(&status), kOk);
    return status;
  }
  std::string ResponseComment() {
    String comment("untouched");
    EXPECT_EQ(store_.As<IDcmStoreResponse>()->get_ResponseComment(&comment), kOk);
    return comment.Utf8();
  }
  std::string AssociationError() {
    String words("untouched");
    EXPECT_EQ(store_.As<IDcmStoreResponse>()->get_AssociationError(&words), kOk);
    return words.Utf8();
  }

  const TempFolder folder_;
  Ref<IDcmCStore> store_ = Create<IDcmCStore>("Tessaret.DcmCStore");
  Sink sink_;
  std::uint32_t cookie_ = 0;
};

TEST(IDcmStoreResponse, HasItsMembersInOrder) {
  EXPECT_EQ(Listing<IDcmStoreResponse>(),
            (Lines{"IDcmStoreResponse:", "get ResponseStatus() -> pVal long",
                   "get ResponseComment() -> pVal text", "get AssociationError() -> pVal text"}));
}

TEST(IDcmVerification, HasItsMembersInOrder) {
  EXPECT_EQ(Listing<IDcmVerification>(),
            (Lines{"IDcmVerification:",
                   "Verify(host text, port text, LocalAE text, RemoteAE text, TimeoutSecs long) -> "
                   "Answered bool"}));
}

TEST_F(CStore, AQueueIsSentAndStays) {
  const std::string first = Add("1", ImageFile("1.2.3.1"));
  const std::string second = Add("2", ImageFile("1.2.3.2", kMRStorage), kMRStorage);
  EXPECT_EQ(NumFiles(), 2);
  EXPECT_EQ(SentFiles(), 0);
  StoreProvider provider;
  for (int time = 0; time < 2; ++time) {
    sink_.lines.clear();
    ASSERT_EQ(Send(provider.Port()), kOk) << LastError().text;
    EXPECT_THAT(sink_.lines,
                ElementsAre("sent " + first + " 0", "sent " + second + " 1", "finished 2 0"));
    EXPECT_EQ(SentFiles(), 2);
    EXPECT_EQ(NumFiles(), 2);
  }
  provider.End();
  EXPECT_EQ(provider.associations, 2u);
  EXPECT_EQ(provider.stored.size(), 4u);
  EXPECT_EQ(provider.titles, "HERE             > THERE           ");
}

TEST_F(CStore, FilesAreNamedByTheirPlace) {
  EXPECT_EQ(NumFiles(), 0);
  ASSERT_EQ(store_->AddFile("no/such file", ""), kOk) << "files are not looked at";
  ASSERT_EQ(store_->AddFile("\xC3\x84", "1.2"), kOk);
  // A name that is no UTF-8 comes back as it went in.
  ASSERT_EQ(store_->AddFile("\xFF.dcm", "1.2"), kOk);
  const auto name = [&](std::int16_t index) {
    String text;
    EXPECT_EQ(store_->get_FileName(index, &text), kOk);
    return text.Utf8();
  };
  EXPECT_EQ(name(0), "no/such file");
  EXPECT_EQ(name(1), "\xC3\x84");
  EXPECT_EQ(name(2), "\xFF.dcm");
  String text("untouched");
  EXPECT_EQ(store_->get_FileName(3, &text), kInvalidArgument);
  EXPECT_EQ(store_->get_FileName(-1, &text), kInvalidArgument);
  EXPECT_EQ(text, String("untouched"));
}

TEST_F(CStore, PlacesThatAreNullAreRefused) {
  EXPECT_EQ(store_->get_NumFiles(nullptr), kPointer);
  EXPECT_EQ(store_->get_SentFiles(nullptr), kPointer);
  EXPECT_EQ(store_->get_FileName(0, nullptr), kPointer);
  const auto response = store_.As<IDcmStoreResponse>();
  EXPECT_EQ(response->get_ResponseStatus(nullptr), kPointer);
  EXPECT_EQ(response->get_ResponseComment(nullptr), kPointer);
  EXPECT_EQ(response->get_AssociationError(nullptr), kPointer);
  EXPECT_EQ(store_.As<IDcmVerification>()->Verify("127.0.0.1", "1", "A", "B", 1, nullptr),
            kPointer);
}

TEST_F(CStore, ATimeBelowZeroIsNone) {
  StoreProvider provider;
  EXPECT_EQ(Send(provider.Port(), -1), kInvalidArgument);
  VariantBool answered = VariantBool::Of(-1);
  EXPECT_EQ(
      store_.As<IDcmVerification>()->Verify("127.0.0.1", provider.Port(), "A", "B", -1, &answered),
      kInvalidArgument);
  EXPECT_FALSE(answered.IsTrue());
  provider.End();
  EXPECT_EQ(provider.associations, 0u);
  EXPECT_THAT(sink_.lines, ElementsAre());
}

TEST_F(CStore, CountsEndAtTheirGreatestNumber) {
  for (int each = 0; each < 40000; ++each) ASSERT_EQ(store_->AddFile("x", "1.2"), kOk);
  EXPECT_EQ(NumFiles(), 32767);
}

TEST_F(CStore, AnEmptyQueueIsDoneAtOnce) {
  StoreProvider provider;
  EXPECT_STORE_FAILS_WITH(Send(provider.Port()),
                          "Connection to  127.0.0.1: THERE permanently refused\nNon active link");
  EXPECT_EQ(AssociationError(), "No SOP Class proposed");
  // A class without a name is not proposed.
  ASSERT_EQ(store_->AddFile("x", ""), kOk);
  EXPECT_EQ(Send(provider.Port()), kException);
  EXPECT_EQ(AssociationError(), "No SOP Class proposed");
  EXPECT_THAT(sink_.lines, ElementsAre());
}

TEST_F(CStore, ARefusedAssociationIsTheCallsFailure) {
  Add("1", ImageFile());
  struct Row {
    ProviderPlan plan;
    const char* reason;
    const char* words;
  };
  const Row rows[] = {
      {{.calledTitle = "OTHER"}, "Unknown remote AETitle", "called AE title not recognized"},
      {{.callingTitle = "OTHER"}, "Unknown local AETitle", "calling AE title not recognized"},
      {{.takesContext = false},
       "Unupported Application Context",
       "application context name not supported"},
      {{.refusedClasses = {kCTStorage}},
       "Unupported Application Context",
       "application context name not supported"}};
  for (const Row& row : rows) {
    StoreProvider provider(row.plan);
    EXPECT_STORE_FAILS_WITH(
        Send(provider.Port()),
        std::string("Connection to  127.0.0.1: THERE permanently refused\n") + row.reason);
    EXPECT_EQ(AssociationError(),
              std::string("Connection rejected permanent: service-user, ") + row.words);
  }
  EXPECT_THAT(sink_.lines, ElementsAre());
  EXPECT_EQ(ResponseStatus(), -1);
  // What failed once is no failure of the next.
  StoreProvider provider;
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(AssociationError(), "");
}

TEST_F(CStore, ANodeThatIsNotThereIsToldInTheSystemsWords) {
  Add("1", ImageFile());
  const auto [listener, port] = ListenOnLoopback();
  ::close(listener);
  EXPECT_STORE_FAILS_WITH(Send(port),
                          "Connection to  127.0.0.1: THERE permanently refused\nNon active link");
  EXPECT_THAT(AssociationError(), HasSubstr("Connection refused"));
}

TEST_F(CStore, WordsNameHostAndTitleAsTheyWereGiven) {
  Add("1", ImageFile());
  AnsweringPeer refusing(Refusal(2, 1, 3));
  EXPECT_STORE_FAILS_WITH(
      store_->SendFiles("127.0.0.1", refusing.Port(), "HERE", "T\xC3\x9CV", 20),
      "Connection to  127.0.0.1: T\xC3\x9CV temporarily refused\nUnknown local AETitle");
}

TEST_F(CStore, OneFileThatFailsDoesNotStopTheOthers) {
  const std::string missing = folder_.File("missing");
  ASSERT_EQ(store_->AddFile(missing, kCTStorage), kOk);
  const std::string good = Add("good", ImageFile());
  const std::string other = Add("other", ImageFile("1.2.3", kMRStorage));
  std::vector<std::string> reasons;
  sink_.then = [&] { reasons.push_back(AssociationError()); };
  StoreProvider provider;
  EXPECT_EQ(Send(provider.Port()), kOk);
  ASSERT_EQ(sink_.lines.size(), 4u);
  EXPECT_THAT(sink_.lines[0],
              StartsWith("error " + missing + " 0 Error sending [" + missing + "]: "));
  EXPECT_EQ(sink_.lines[1], "sent " + good + " 1");
  EXPECT_EQ(sink_.lines[2],
            "error " + other + " 2 Error sending [" + other +
                "]: Cannot find Presentation Context for SOP Class[1.2.840.10008.5.1.4.1.1.4]");
  EXPECT_EQ(sink_.lines[3], "finished 1 2");
  EXPECT_EQ(SentFiles(), 1);
  const std::string none =
      "Cannot find Presentation Context for SOP Class[1.2.840.10008.5.1.4.1.1.4]";
  EXPECT_THAT(reasons, ElementsAre("", "", none, none));
}

TEST_F(CStore, TheEventOfAFileIsWhereItsAnswerIs) {
  for (const char* name : {"1", "2", "3", "4"}) Add(name, ImageFile());
  std::filesystem::remove(folder_.File("3"));
  StoreProvider provider({.answer = [](std::size_t at) {
    constexpr std::uint16_t kStatuses[] = {0, 0xA700, 0xB007};
    return StoreAnswer{.status = kStatuses[at], .comment = at == 1 ? "no room " : ""};
  }});
  std::vector<std::string> answers;
  sink_.then = [&] {
    answers.push_back(std::to_string(ResponseStatus()) + " " + ResponseComment() + " " +
                      std::to_string(SentFiles()));
  };
  EXPECT_EQ(Send(provider.Port()), kOk);
  // A refusal counts as sent; 0xA700 is 42752, 0xB007 is 45063.
  EXPECT_THAT(answers, ElementsAre("0  1", "42752 no room 2", "-1  2", "45063  3", "45063  3"));
  EXPECT_EQ(sink_.lines.back(), "finished 3 1");
}

TEST_F(CStore, WhatOneCallDidIsForgottenByTheNext) {
  Add("1", ImageFile());
  {
    StoreProvider provider({.answer = [](std::size_t) { return StoreAnswer{.status = 0xA700}; }});
    EXPECT_EQ(Send(provider.Port()), kOk);
    EXPECT_EQ(SentFiles(), 1);
    EXPECT_EQ(ResponseStatus(), 0xA700);
  }
  AnsweringPeer refusing(Refusal(1, 1, 1));
  EXPECT_EQ(Send(refusing.Port()), kException);
  EXPECT_EQ(SentFiles(), 0);
  EXPECT_EQ(ResponseStatus(), -1);
}

TEST_F(CStore, CancelEndsItBeforeTheNextFile) {
  const std::string first = Add("1", ImageFile());
  Add("2", ImageFile());
  StoreProvider provider;
  sink_.then = [&] { EXPECT_EQ(store_->Cancel(), kOk); };
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_THAT(sink_.lines, ElementsAre("sent " + first + " 0", "finished 1 0"));
  // A cancel from before counts no more.
  sink_.then = nullptr;
  sink_.lines.clear();
  EXPECT_EQ(store_->Cancel(), kOk);
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(sink_.lines.back(), "finished 2 0");
}

TEST_F(CStore, AnotherThreadMayCancelIt) {
  const std::string first = Add("1", ImageFile());
  Add("2", ImageFile());
  IDcmCStore& store = *store_;
  StoreProvider provider({.answer = [&](std::size_t) {
    EXPECT_EQ(store.Cancel(), kOk);
    return StoreAnswer{};
  }});
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_THAT(sink_.lines, ElementsAre("sent " + first + " 0", "finished 1 0"));
}

TEST_F(CStore, WithinItsOwnEventsItIsNotStartedAgain) {
  Add("1", ImageFile());
  StoreProvider provider;
  int times = 0;
  sink_.then = [&] {
    ++times;
    EXPECT_STORE_FAILS_WITH(Send(provider.Port()), "Files are being sent already");
  };
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(times, 2);
  sink_.then = nullptr;
  EXPECT_EQ(Send(provider.Port()), kOk);
}

TEST_F(CStore, WhatAnEventThrowsOrAnswersIsItsOwnAffair) {
  const std::string first = Add("1", ImageFile());
  const std::string missing = folder_.File("missing");
  ASSERT_EQ(store_->AddFile(missing, kCTStorage), kOk);
  Add("3", ImageFile());
  StoreProvider provider;
  sink_.answer = kUnexpected;
  sink_.then = [] { throw std::runtime_error("a host's"); };
  EXPECT_EQ(Send(provider.Port()), kOk);
  ASSERT_EQ(sink_.lines.size(), 4u);
  EXPECT_EQ(sink_.lines[0], "sent " + first + " 0");
  EXPECT_EQ(sink_.lines[3], "finished 2 1");
  sink_.then = [] { throw 7; };
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(sink_.lines.back(), "finished 2 1");
  sink_.then = nullptr;
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(sink_.lines.back(), "finished 2 1");
  provider.End();
  EXPECT_EQ(provider.releases, 3u);
}

TEST_F(CStore, ASinkMayLeaveWithinAnEvent) {
  Add("1", ImageFile());
  Add("2", ImageFile());
  Sink other;
  std::uint32_t cookie = 0;
  const auto events = store_.As<IEventSource>();
  ASSERT_EQ(events->Advise(&other, &cookie), kOk);
  other.then = [&] { EXPECT_EQ(events->Unadvise(cookie), kOk); };
  StoreProvider provider;
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(other.lines.size(), 1u);
  EXPECT_EQ(sink_.lines.back(), "finished 2 0");
}

TEST_F(CStore, ANodeMayBeAskedWithinAnEvent) {
  Add("1", ImageFile());
  Add("2", ImageFile());
  StoreProvider provider;
  StoreProvider other;
  int answers = 0;
  sink_.then = [&] {
    VariantBool answered;
    EXPECT_EQ(store_.As<IDcmVerification>()->Verify("127.0.0.1", other.Port(), "HERE", "THERE", 20,
                                                    &answered),
              kOk);
    if (answered.IsTrue()) ++answers;
  };
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(answers, 3);
  EXPECT_EQ(sink_.lines.back(), "finished 2 0");
  other.End();
  EXPECT_EQ(other.echoes, 3u);
}

TEST_F(CStore, AnEventMayTakeItsTime) {
  Add("1", ImageFile());
  Add("2", ImageFile());
  StoreProvider provider;
  // Longer than an answer may take: nobody waits for the node meanwhile.
  sink_.then = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1100)); };
  EXPECT_EQ(Send(provider.Port(), 1), kOk);
  EXPECT_EQ(sink_.lines.back(), "finished 2 0");
}

TEST_F(CStore, AClassMayBeGivenWithWhatFillsItsElementUp) {
  const std::string path = folder_.File("1");
  WriteBytes(path, ImageFile());
  for (const std::string& given : {std::string(kCTStorage) + '\0', std::string(kCTStorage) + ' ',
                                   ' ' + std::string(kCTStorage)}) {
    ASSERT_EQ(store_->AddFile(path, String(given)), kOk);
  }
  StoreProvider provider;
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(sink_.lines.back(), "finished 3 0");
  provider.End();
  EXPECT_THAT(provider.proposals,
              ElementsAre("1.2.840.10008.5.1.4.1.1.2: 1.2.840.10008.1.2 1.2.840.10008.1.2.1"));
}

TEST_F(CStore, WithoutMemoryNoEventIsLostUnlessTheCallFails) {
  Add("1", ImageFile());
  Add("2", ImageFile());
  Add("3", {});
  // Files that were changed within two seconds are not loaded while the peer works.
  std::this_thread::sleep_for(std::chrono::milliseconds(2100));
  StoreProvider provider;
  EXPECT_EQ(store_.As<IEventSource>()->Unadvise(cookie_), kOk);
  Counter counter;
  ASSERT_EQ(store_.As<IEventSource>()->Advise(&counter, &cookie_), kOk);
  const String host("127.0.0.1");
  const String port(provider.Port());
  const String title("HERE");
  // What the first one leaves behind for the next.
  EXPECT_EQ(store_->SendFiles(host, port, title, title, 20), kOk);
  const AllocationWatch watch;
  int failures = 0;
  int filesWithout = 0;
  const std::uint64_t runs = FailEveryAllocation([&] {
    counter.files = counter.lacks = counter.ends = 0;
    const Status status = store_->SendFiles(host, port, title, title, 20);
    if (Failed(status)) {
      ++failures;
      EXPECT_TRUE(status == kOutOfMemory || status == kException) << status;
    } else {
      EXPECT_EQ(counter.files, 3);
      EXPECT_EQ(counter.ends, 1);
      filesWithout += counter.lacks;
    }
  });
  EXPECT_GT(runs, 20u);
  EXPECT_GT(failures, 0);
  EXPECT_GT(filesWithout, 0) << "a lack of memory for one file ends the run";
  // The words of the last failure stay; a block a run would be more.
  EXPECT_LT(watch.Outstanding(), 10);
  EXPECT_EQ(store_->SendFiles(host, port, title, title, 20), kOk);
  EXPECT_EQ(SentFiles(), 2);
  // The counter goes before the store does.
  EXPECT_EQ(store_.As<IEventSource>()->Unadvise(cookie_), kOk);
  ASSERT_EQ(store_.As<IEventSource>()->Advise(&sink_, &cookie_), kOk);
}

TEST_F(CStore, AFileForWhichThereIsNoMemoryLeavesNoClassEither) {
  const String path("/a/path/that/is/longer/than/what/a/string/has/room/for");
  const String sopClass(kCTStorage);
  for (std::uint64_t nth = 1;; ++nth) {
    Status status = kOk;
    {
      const AllocationFailure failure(nth);
      status = store_->AddFile(path, sopClass);
      if (!failure.Happened()) break;
    }
    EXPECT_EQ(status, kOutOfMemory) << nth;
    EXPECT_EQ(NumFiles(), 0) << nth;
    EXPECT_EQ(Send("1"), kException);
    EXPECT_EQ(AssociationError(), "No SOP Class proposed") << nth;
  }
  EXPECT_EQ(NumFiles(), 1);
}

TEST_F(CStore, AFileAddedWithinAnEventIsSentToo) {
  Add("1", ImageFile());
  StoreProvider provider;
  sink_.then = [&] {
    if (NumFiles() < 3) Add(std::to_string(NumFiles() + 1), ImageFile());
  };
  EXPECT_EQ(Send(provider.Port()), kOk);
  EXPECT_EQ(sink_.lines.back(), "finished 3 0");
}

TEST_F(CStore, ItLastsAsLongAsItsEvents) {
  Add("1", ImageFile());
  Add("2", ImageFile());
  StoreProvider provider;
  IDcmCStore* const bare = store_.Get();
  sink_.then = [&] { store_ = {}; };
  EXPECT_EQ(bare->SendFiles("127.0.0.1", provider.Port(), "HERE", "THERE", 20), kOk);
  EXPECT_EQ(sink_.lines.back(), "finished 2 0");
}

TEST_F(CStore, ANodeIsAskedWhetherItIsThere) {
  const auto verification = store_.As<IDcmVerification>();
  VariantBool answered;
  {
    StoreProvider provider;
    EXPECT_EQ(verification->Verify("127.0.0.1", provider.Port(), "HERE", "THERE", 20, &answered),
              kOk);
    EXPECT_TRUE(answered.IsTrue());
    EXPECT_EQ(answered.value, -1);
    provider.End();
    EXPECT_EQ(provider.echoes, 1u);
  }
  StoreProvider silent({.answersEcho = false});
  EXPECT_EQ(verification->Verify("127.0.0.1", silent.Port(), "HERE", "THERE", 20, &answered), kOk);
  EXPECT_FALSE(answered.IsTrue());
  EXPECT_EQ(AssociationError(), "The peer has closed the link");
  AnsweringPeer refusing(Refusal(1, 1, 7));
  answered = VariantBool::Of(-1);
  EXPECT_STORE_FAILS_WITH(
      verification->Verify("127.0.0.1", refusing.Port(), "HERE", "THERE", 20, &answered),
      "Connection to  127.0.0.1: THERE permanently refused\nUnknown remote AETitle");
  EXPECT_FALSE(answered.IsTrue());
  EXPECT_EQ(AssociationError(),
            "Connection rejected permanent: service-user, called AE title not recognized");
}

}  // namespace
}  // namespace tessaret::test
