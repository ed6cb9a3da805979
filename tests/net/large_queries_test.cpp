// Queries of very many responses, of long identifiers, and of keys that make no sense: all of it arrives, is answered, and costs in
// proportion.
#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <exception>
#include <thread>

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/query_helpers.h"
#include "support/build_kind.h"
#include "support/data_set_builder.h"
#include "support/measured_child.h"

namespace tessaret::test {
namespace {

constexpr int kMany = Repetitions(100'000);

/// A name that no other number has, of eight characters.
std::string NameOfMatch(int number) {
  const std::string digits = std::to_string(number);
  return "N" + std::string(7 - digits.size(), '0') + digits;
}

double SecondsOfThisThread() {
  timespec used{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Responses with so many matches, each another one, and the last response. What one is made of each time is `match`, with a name of
/// eight characters at its end.
Bytes ResponsesOf(int matches, Bytes match, const Bytes& last) {
  Bytes all;
  for (int i = 0; i < matches; ++i) {
    const std::string name = NameOfMatch(i);
    std::copy(name.begin(), name.end(), match.end() - 8);
    Append(all, match);
  }
  Append(all, last);
  return all;
}

/// Runs the peer's part of an exchange on a thread of its own.
class PeersPart {
 public:
  template <class Work>
  explicit PeersPart(Work work)
      : thread_([this, work] {
          try {
            work();
          } catch (const std::exception& failure) {
            failure_ = failure.what();
          }
        }) {}
  ~PeersPart() { Wait(); }
  /// What went wrong in it, or nothing.
  std::string Wait() {
    if (thread_.joinable()) thread_.join();
    return failure_;
  }

 private:
  std::string failure_;
  std::thread thread_;
};

/// Has our provider answer with so many matches, each another one, and looks at every byte of that. Seconds of the provider's thread.
double SecondsToAnswer(int matches) {
  Association association(kContexts);
  Finding<StudyRootQuery> query;
  for (int i = 0; i < matches; ++i) query.Match(NameOfMatch(i));
  const Bytes expected =
      ResponsesOf(matches, FindAnswer(0xFF00, NameOfMatch(0)), FindAnswer(0, ""));
  association.peer.Send(FindRequest());
  Bytes received;
  PeersPart peer([&] { received = association.peer.Receive(expected.size()); });
  DICOMCommandObject command;
  ReadCommand(association, command);
  const double start = SecondsOfThisThread();
  EXPECT_TRUE(query.Read(&association.pdu, &command));
  const double seconds = SecondsOfThisThread() - start;
  EXPECT_EQ(peer.Wait(), "");
  EXPECT_TRUE(received == expected) << received.size() << " bytes of " << expected.size();
  return seconds;
}

/// Has our requester take so many matches, each another one, and looks at what its hook is told. Seconds of the requester's thread.
double SecondsToTake(int matches) {
  Association association(kContexts);
  const Bytes responses =
      ResponsesOf(matches, FindResponse(0xFF00, NameOfMatch(0)), FindResponse(0, ""));
  std::string expected = "query=Q*;";
  for (int i = 0; i < matches; ++i) expected += "65280=" + NameOfMatch(i) + ";";
  expected += "0=;";
  SetIdentifierCounter(1);
  PeersPart peer([&] { association.peer.SendAll(responses); });
  Finding<StudyRootQuery> query;
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  const double start = SecondsOfThisThread();
  EXPECT_TRUE(query.Write(&association.pdu, &what)) << Words(association.pdu);
  const double seconds = SecondsOfThisThread() - start;
  EXPECT_EQ(peer.Wait(), "");
  EXPECT_TRUE(query.told == expected) << query.calls << " calls";
  return seconds;
}

/// Ten times as many take about ten times as long; a hundred times would be as their square.
void ExpectLinear(double (*seconds)(int)) {
  const double few = seconds(kMany / 10);
  const double many = seconds(kMany);
  if (!kAsShipped) return;
  EXPECT_LT(many, 30 * few) << "seconds, and for a tenth " << few;
}

TEST(LargeQuery, IsAnsweredByEachOfAHundredThousandMatchesInItsOrder) {
  ExpectLinear(SecondsToAnswer);
}

TEST(LargeQuery, HandsOnEachOfAHundredThousandMatchesInItsOrder) { ExpectLinear(SecondsToTake); }

/// Sends a request whose identifier is in these parts, each in a PDU of its own.
template <class PartAt>
void SendRequestInParts(const Peer& peer, int parts, PartAt partAt) {
  peer.Send(SplitPdus(FindRequest())[0]);
  for (int i = 0; i < parts; ++i) {
    peer.Send(Data(5, i + 1 == parts ? kLastPart : std::uint8_t{0}, partAt(i)));
  }
}

/// Whether our provider answers such a request with one match; `check` looks at the identifier that it was asked.
template <class PartAt, class Check>
bool IsAnswered(int parts, PartAt partAt, Check check) {
  Association association(kContexts);
  PeersPart peer([&] { SendRequestInParts(association.peer, parts, partAt); });
  class Checking : public Finding<StudyRootQuery> {
   public:
    explicit Checking(Check check) : check_(check) {}
    bool SearchDatabase(DICOMDataObject& query,
                        std::vector<std::unique_ptr<DICOMDataObject>>& response) override {
      Match("AA");
      response = std::move(matches);
      return check_(query);
    }

   private:
    Check check_;
  } query(check);
  DICOMCommandObject command;
  const bool isRead = association.pdu.Read(command) != 0 && query.Read(&association.pdu, &command);
  return peer.Wait().empty() && isRead &&
         association.peer.Received() == Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0, "")});
}

constexpr int kParts = 160;
constexpr std::size_t kPartBytes = 1 << 16;
constexpr std::uint64_t kIdentifierBytes = kParts * kPartBytes;  // ten megabytes

TEST(LargeQuery, HasAKeyOfTenMegabytes) {
  ::malloc_trim(0);  // what is free here would not count as growth of the child
  const Measured measured = RunMeasured([] {
    const auto partAt = [](int part) {
      if (part != 0) return Bytes(kPartBytes, '?');
      Bytes first = Elements().Value(0x0010, 0x0010, {});
      const auto length = static_cast<std::uint32_t>(kIdentifierBytes) - 8;
      for (std::size_t i = 0; i < 4; ++i) {
        first[4 + i] = static_cast<std::uint8_t>(length >> 8 * i);
      }
      first.resize(kPartBytes, '?');
      return first;
    };
    const auto check = [](const DICOMDataObject& query) {
      return NameIn(query) == std::string(kIdentifierBytes - 8, '?');
    };
    return IsAnswered(kParts, partAt, check) ? 0 : 1;
  });
  EXPECT_EQ(measured.result, 0);
  RecordProperty("peak_growth_kib", std::to_string(measured.peakGrowth >> 10));
  // The message, with room to grow to twice of it; the value; and two more of them for the comparison here.
  if (!kAsShipped) return;
  EXPECT_LT(measured.peakGrowth, 5 * kIdentifierBytes + (8 << 20));
}

TEST(LargeQuery, HasVeryManyKeys) {
  // Elements of 8 bytes each, those of a part in a group of its own: 655,360.
  constexpr int kKeys = static_cast<int>(kPartBytes) / 16;
  const auto groupOf = [](int part) { return 0x0010 + 2 * part; };
  ::malloc_trim(0);
  const Measured measured = RunMeasured([&] {
    Bytes keys;
    for (int i = 0; i < kKeys; ++i) {
      Append(keys, Elements().Value(0, static_cast<std::uint16_t>(i + 1), Bytes(8, '*')));
    }
    const auto partAt = [&](int part) {
      for (std::size_t at = 0; at < keys.size(); at += 16) {
        keys[at] = static_cast<std::uint8_t>(groupOf(part));
        keys[at + 1] = static_cast<std::uint8_t>(groupOf(part) >> 8);
      }
      return keys;
    };
    const auto check = [&](const DICOMDataObject& query) {
      int count = 0;
      query.Elements.ForEachWhile([&](const VR& vr) {
        if (vr.Group == 0x0002) return true;
        const bool isNext = vr.Group == groupOf(count / kKeys) && vr.Element == count % kKeys + 1 &&
                            Bytes(vr.Data, vr.Data + vr.Length) == Bytes(8, '*');
        count += isNext ? 1 : 0;
        return isNext;
      });
      return count == kParts * kKeys;
    };
    return IsAnswered(kParts, partAt, check) ? 0 : 1;
  });
  EXPECT_EQ(measured.result, 0);
  RecordProperty("peak_growth_kib", std::to_string(measured.peakGrowth >> 10));
  if (!kAsShipped) return;
  EXPECT_LT(measured.peakGrowth, 16 * kIdentifierBytes);
}

/// Answers with the very identifier that it is asked.
class Echoing : public Finding<StudyRootQuery> {
 public:
  bool SearchDatabase(DICOMDataObject& query,
                      std::vector<std::unique_ptr<DICOMDataObject>>& response) override {
    response.push_back(std::make_unique<DICOMDataObject>());
    return response.back()->CopyFrom(query);
  }
};

/// What our provider answers to a request with this identifier, in this syntax, where it has it for a match.
Bytes EchoOf(const Bytes& identifier, std::string_view syntax) {
  Association association({{5, kFind, syntax}});
  association.peer.Send(Joined({SplitPdus(FindRequest())[0], Data(5, kLastPart, identifier)}));
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_TRUE(Echoing().Read(&association.pdu, &command));
  return association.peer.Received();
}

/// The command of a pending response, this data set, and the last response.
Bytes AnswerWith(const Bytes& dataSet) {
  return Joined(
      {SplitPdus(FindAnswer(0xFF00, "AA"))[0], Fragmented(5, 0, dataSet), FindAnswer(0, "")});
}

TEST(OddKeys, OfWrongTypesAreTakenAndGivenAsTheyAre) {
  const Bytes item = DataSetBuilder(Encoding::kExplicitLittle).Element(0x0008, 0x0100, "SH", "C1");
  for (const char* letters :
       {"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FL", "FD", "IS", "LO", "LT", "OB",
        "OW", "PN", "SH", "SL", "SS", "ST", "TM", "UI", "UL", "UN", "US", "UT"}) {
    // The level of the query, a date, a name, and an instance, each of the same type, and a sequence where there is none.
    const Bytes identifier =
        DataSetBuilder(Encoding::kExplicitLittle)
            .Element(0x0008, 0x0018, letters, "1.2.3.4.")
            .Element(0x0008, 0x0020, letters, "19000101-*?*?*?*")
            .Element(0x0008, 0x0052, letters, "SERIES")
            .Sequence(0x0010, 0x0010, Lengths::kUndefined, Lengths::kUndefined, {item})
            .Element(0x0020, 0x000D, letters, "")
            .Done();
    EXPECT_EQ(EchoOf(identifier, kExplicit), AnswerWith(identifier)) << letters;
  }
}

TEST(OddKeys, OfThousandsOfWildcardsAreTakenAndGivenAsTheyAre) {
  std::string key;
  while (key.size() < 60'000) key += "*?";
  for (const std::string& wildcards : {key, std::string(60'000, '*'), std::string(60'000, '\\')}) {
    const Bytes identifier = NameBytes(wildcards);
    EXPECT_TRUE(EchoOf(identifier, kImplicit) == AnswerWith(identifier)) << wildcards.substr(0, 4);
    Association association(kContexts);
    SetIdentifierCounter(9);
    association.peer.SendAll(FindResponse(0, ""));
    DICOMDataObject what;
    PutBytes(what, 0x0010, 0x0010, type_code::PN, wildcards);
    Finding<StudyRootQuery> query;
    EXPECT_TRUE(query.Write(&association.pdu, &what)) << Words(association.pdu);
    EXPECT_TRUE(association.peer.Received() ==
                Joined({SplitPdus(FindRequest())[0], Fragmented(5, 0, identifier)}));
  }
}

}  // namespace
}  // namespace tessaret::test
