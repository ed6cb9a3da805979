#include "network_words.h"

#include "class_object.h"

namespace tessaret::tool {

std::string WithNetworkWords(const std::string& words, IDcmStoreResponse& store) {
  const std::string more = AnswerOf(store, &IDcmStoreResponse::get_AssociationError).Utf8();
  return more.empty() ? words : words + " (" + more + ")";
}

std::string WhyNoAssociation(IDcmStoreResponse& store) {
  std::string words = LastError().text;
  for (std::size_t at = words.find('\n'); at != std::string::npos; at = words.find('\n', at)) {
    words.replace(at, 1, at + 1 == words.size() ? "" : ": ");
  }
  return WithNetworkWords(words, store);
}

}  // namespace tessaret::tool
