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

}  // namespace tessaret::test
