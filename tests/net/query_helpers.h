// A query for tests, in both roles.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "net/command_elements.h"
#include "net/service_helpers.h"
#include "net/standard_query.h"

namespace tessaret::test {

/// A query that finds what it is given, and writes down what it is told.
template <class Query>
class Finding : public Query {
 public:
  bool SearchDatabase(DICOMDataObject& query,
                      std::vector<std::unique_ptr<DICOMDataObject>>& response) override {
    asked += NameIn(query) + ";";
    if (throws) throw std::runtime_error("no");
    response = std::move(matches);
    return !fails;
  }
  bool OnResponse(DICOMCommandObject* command, DICOMDataObject* data) override {
    told += (command == nullptr ? "query" : std::to_string(*CommandNumber(*command, 0x0900))) +
            "=" + NameIn(*data) + ";";
    return ++calls != cancelAt;
  }
  void Match(std::string_view name) {
    matches.push_back(std::make_unique<DICOMDataObject>());
    if (!name.empty()) PutBytes(*matches.back(), 0x0010, 0x0010, type_code::PN, name);
  }
  std::vector<std::unique_ptr<DICOMDataObject>> matches;
  std::string asked;
  std::string told;
  bool throws = false;
  bool fails = false;
  int calls = 0;
  int cancelAt = 0;
};

/// A response to a query: without a status, and with one.
inline Bytes FindResponse(int status, std::string_view name, std::uint16_t field = 0x8020) {
  Command command;
  command.Uid(0x0002, kFind)
      .Number(0x0100, field)
      .Number(0x0120, 1)
      .Number(0x0800, name.empty() ? 0x0101 : 0x0102);
  if (status >= 0) command.Number(0x0900, static_cast<std::uint16_t>(status));
  const Bytes whole = Data(5, kWholeCommand, command);
  return name.empty() ? whole : Joined({whole, Data(5, kLastPart, NameBytes(name))});
}

/// What our provider answers.
inline Bytes FindAnswer(std::uint16_t status, std::string_view name) {
  const Bytes command = Data(5, kWholeCommand,
                             Command()
                                 .Uid(0x0002, kFind)
                                 .Number(0x0100, 0x8020)
                                 .Number(0x0110, 9)
                                 .Number(0x0120, 9)
                                 .Number(0x0700, 2)
                                 .Number(0x0800, name.empty() ? 0x0101 : 0x0102)
                                 .Number(0x0900, status));
  return name.empty() ? command : Joined({command, Data(5, kLastPart, NameBytes(name))});
}

}  // namespace tessaret::test
