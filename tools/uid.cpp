#include "uid.h"

namespace tessaret::tool {
namespace {

bool HasLeadingZero(std::string_view text) {
  for (std::size_t at = 0; at + 1 < text.size(); ++at) {
    if ((at == 0 || text[at - 1] == '.') && text[at] == '0' && text[at + 1] != '.') return true;
  }
  return false;
}

}  // namespace

bool IsUid(std::string_view text) {
  return text.find_first_not_of(".0123456789") == std::string_view::npos &&
         !text.starts_with('.') && !text.ends_with('.') &&
         text.find("..") == std::string_view::npos && !HasLeadingZero(text);
}

}  // namespace tessaret::tool
