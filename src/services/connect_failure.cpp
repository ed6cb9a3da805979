#include "services/connect_failure.h"

#include <cstdint>

#include "base/text.h"
#include "component/string_table.h"

namespace tessaret {
namespace {

constexpr std::int32_t kPermanentlyRefused = 531;
constexpr std::int32_t kTemporarilyRefused = 532;
constexpr std::int32_t kNonActiveLink = 533;

/// Entries of the string table by the number of the reason; 0: none.
constexpr std::int32_t kReasons[] = {
    0, kNonActiveLink, 534, 535, kNonActiveLink, kNonActiveLink, kNonActiveLink, 536};

/// The text of an entry with its two "%s" filled in, and nothing in what fills them.
std::string Filled(std::string text, const std::string& first, const std::string& second) {
  std::size_t from = 0;
  for (const std::string* each : {&first, &second}) {
    const std::size_t at = text.find("%s", from);
    if (at == std::string::npos) break;
    text.replace(at, 2, *each);
    from = at + each->size();
  }
  return text;
}

}  // namespace

std::string ConnectFailureWords(const AAssociateRJ& refusal, const std::string& host,
                                const std::string& remoteTitle) {
  // A peer can send numbers that mean nothing; the link is of no use then either.
  const std::int32_t result = refusal.Result == 2 ? kTemporarilyRefused : kPermanentlyRefused;
  const std::int32_t reason = refusal.Reason < std::size(kReasons) ? kReasons[refusal.Reason] : 0;
  std::string words = Filled(std::string(StringOf(result)), host, remoteTitle);
  words += '\n';
  words += StringOf(reason);
  return words;
}

std::string LastWordsOf(const PDU_Service& pdu) {
  std::string link = pdu.Link.GetLastError();
  if (pdu.GetLastError() == nullptr) {
    if (!link.empty()) return link;
    // A peer that gives another answer leaves words, or ends the link.
    return pdu.Link.Connected == 0 ? "The association has ended" : "The object cannot be encoded";
  }
  const std::string words = pdu.GetLastError();
  // What has nothing to do with a link that still stands is no reason of its.
  const bool isOfLink = pdu.Link.Connected == 0 && !link.empty() && link != words;
  return isOfLink ? words + ": " + link : words;
}

}  // namespace tessaret
