#include "type_code.h"

namespace tessaret::tool {
namespace {

char Shown(char letter) { return letter >= ' ' && letter <= '~' ? letter : '.'; }

}  // namespace

std::string TypeLetters(VrCode type) {
  if (type == type_code::kNone) return "XX";
  return {Shown(FirstLetter(type)), Shown(SecondLetter(type))};
}

}  // namespace tessaret::tool
