// Queries and retrievals as their requester, for the tests that hold them against independent archives. Not installed.
//
//   interop_requester [OPTION...] PORT find FOLDER KEY...       every match becomes a file of FOLDER, named by its number
//   interop_requester [OPTION...] PORT move DESTINATION KEY...
//   interop_requester [OPTION...] PORT echo
//
// Goes to PORT of this machine. FOLDER may be "-" for none. A KEY is GGGG,EEEE:VR=VALUE; those of a request stand in the order of their
// tags. Each response is a line: "find" and its status, or "move", its status, and the sub-operations that remain, were completed,
// failed, and were warned of, "-" for what it does not say. The last lines say how the request ended, "true" or "false", and the
// same of an echo over the same association behind it.
//   --called AE     who is asked for; ARCHIVE
//   --context UID   the application context in place of the standard's
//   --patient       the patient root in place of the study root
//   --explicit      proposes explicit little endian before implicit
//   --cancel N      cancels at the response of this number, counted from 1
//
// Exit code 3, with the words and the numbers of the refusal, when there is no association.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "core/data_set_coder.h"
#include "core/transfer_syntax.h"
#include "net/command_elements.h"
#include "net/pdu_service.h"
#include "net/sop_classes.h"
#include "net/standard_query.h"
#include "net/standard_retrieve.h"
#include "net/verification.h"
#include "support/test_paths.h"

namespace tessaret::test {
namespace {

struct Settings {
  std::string called = "ARCHIVE";
  std::string context;
  bool isPatientRoot = false;
  bool isExplicit = false;
  int cancelAt = 0;
  std::string port;
  std::string verb;
  std::string place;  // folder or destination
  std::vector<std::string> keys;
};

std::string NumberIn(const DICOMObject& command, std::uint16_t element) {
  const auto number = CommandNumber(command, element);
  return number ? std::to_string(*number) : "-";
}

std::string StatusIn(const DICOMObject& command) {
  return Format("%4.4x", CommandNumber(command, command_element::kStatus).value_or(0xFFFF));
}

template <class Query>
class Find : public Query {
 public:
  explicit Find(const Settings& settings) : settings_(settings) {}
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    return false;  // nobody asks
  }
  bool OnResponse(DICOMCommandObject* command, DICOMDataObject* data) override {
    if (command == nullptr) return true;
    std::printf("find\t%s\n", StatusIn(*command).c_str());
    if (!HasDataSet(*command)) return true;
    ++matches_;
    if (settings_.place != "-") Save(*data);
    return matches_ != settings_.cancelAt;
  }

 private:
  void Save(DICOMDataObject& match) const {
    DataSetCoder coder;
    const std::string path = settings_.place + Format("/%5.5d", matches_);
    if (!coder.SaveKeeping(path.c_str(), 3, match)) {
      std::fprintf(stderr, "%s: %s\n", path.c_str(), coder.ErrorText());
    }
  }

  const Settings& settings_;
  int matches_ = 0;
};

template <class Retrieve>
class Move : public Retrieve {
 public:
  explicit Move(const Settings& settings) : settings_(settings) {}
  bool FindDestination(std::string_view, PeerAddress&) override { return false; }
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    return false;
  }
  bool PrepareMove(std::string_view, DICOMDataObject&, std::vector<std::string>&,
                   std::uint16_t&) override {
    return false;  // nobody asks for any of these
  }
  bool OnMoveResponse(DICOMCommandObject* command, DICOMDataObject*) override {
    if (command == nullptr) return true;
    std::printf("move\t%s\t%s\t%s\t%s\t%s\n", StatusIn(*command).c_str(),
                NumberIn(*command, command_element::kRemaining).c_str(),
                NumberIn(*command, command_element::kCompleted).c_str(),
                NumberIn(*command, command_element::kFailed).c_str(),
                NumberIn(*command, command_element::kWarning).c_str());
    return ++responses_ != settings_.cancelAt;
  }

 private:
  const Settings& settings_;
  int responses_ = 0;
};

/// Puts GGGG,EEEE:VR=VALUE into the query, with a blank or a NUL where the value is of an odd length.
bool PutKey(DICOMObject& query, const std::string& key) {
  unsigned group = 0;
  unsigned element = 0;
  char letters[3] = {};
  int end = 0;
  if (std::sscanf(key.c_str(), "%4x,%4x:%2[A-Z]=%n", &group, &element, letters, &end) != 3 ||
      end == 0) {
    return false;
  }
  const VrCode type = MakeTypeCode(letters[0], letters[1]);
  std::string value = key.substr(static_cast<std::size_t>(end));
  if (value.size() % 2 != 0) value += type == type_code::UI ? '\0' : ' ';
  PutBytes(query, static_cast<std::uint16_t>(group), static_cast<std::uint16_t>(element), type,
           value);
  return true;
}

bool Ask(PDU_Service& pdu, const Settings& settings, DICOMDataObject& query) {
  if (settings.verb == "find") {
    return settings.isPatientRoot ? Find<PatientRootQuery>(settings).Write(&pdu, &query)
                                  : Find<StudyRootQuery>(settings).Write(&pdu, &query);
  }
  return settings.isPatientRoot
             ? Move<PatientRootRetrieve>(settings).Write(&pdu, &query, settings.place)
             : Move<StudyRootRetrieve>(settings).Write(&pdu, &query, settings.place);
}

void Propose(PDU_Service& pdu, const Settings& settings) {
  pdu.SetCallingTitle("TESTER");
  pdu.SetCalledTitle(settings.called);
  if (!settings.context.empty()) pdu.SetApplicationContext(UID(settings.context));
  if (settings.isExplicit) pdu.AddTransferSyntax(UID("1.2.840.10008.1.2.1"));
  for (const char* sopClass :
       {sop_class::kVerification, sop_class::kPatientRootQuery, sop_class::kStudyRootQuery,
        sop_class::kPatientRootMove, sop_class::kStudyRootMove}) {
    pdu.AddAbstractSyntax(UID(sopClass));
  }
}

bool ReadSettings(int count, char** words, Settings& settings) {
  int at = 1;
  const auto next = [&] { return std::string(at < count ? words[at++] : ""); };
  while (at < count && std::string_view(words[at]).starts_with("--")) {
    const std::string option = next();
    if (option == "--called") {
      settings.called = next();
    } else if (option == "--context") {
      settings.context = next();
    } else if (option == "--patient") {
      settings.isPatientRoot = true;
    } else if (option == "--explicit") {
      settings.isExplicit = true;
    } else if (option == "--cancel") {
      settings.cancelAt = std::atoi(next().c_str());
    } else {
      return false;
    }
  }
  settings.port = next();
  settings.verb = next();
  settings.place = next();
  while (at < count) settings.keys.push_back(next());
  return settings.verb == "find" || settings.verb == "move" || settings.verb == "echo";
}

int Run(int count, char** words) {
  Settings settings;
  RTC dictionary;
  const std::string path = std::string(kDataDir) + "/dicom-dict.txt";
  if (!ReadSettings(count, words, settings) || !dictionary.AttachRTC(path.c_str())) return 2;
  DICOMDataObject query;
  for (const std::string& key : settings.keys) {
    if (!PutKey(query, key)) return 2;
  }
  PDU_Service pdu;
  pdu.AttachDictionary(&dictionary, false);
  Propose(pdu, settings);
  if (pdu.Connect("127.0.0.1", settings.port) == 0) {
    std::fprintf(stderr, "%s\n%d %d %d\n", pdu.GetLastError(), pdu.AAssociateRJ.Result,
                 pdu.AAssociateRJ.Source, pdu.AAssociateRJ.Reason);
    return 3;
  }
  if (settings.verb != "echo") {
    const bool isDone = Ask(pdu, settings, query);
    std::printf("%s\n", isDone ? "true" : "false");
    if (!isDone && settings.cancelAt == 0) std::fprintf(stderr, "%s\n", pdu.GetLastError());
  }
  std::printf("%s\n", Verification().Write(&pdu) ? "true" : "false");
  return pdu.Close() == 1 ? 0 : 1;
}

}  // namespace
}  // namespace tessaret::test

int main(int count, char** words) { return tessaret::test::Run(count, words); }
