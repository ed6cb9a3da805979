#include "synthetic.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace tessaret::bench {
namespace {

struct TextMaker {
  VrCode type;
  std::string (*make)(Dice& dice);
};

constexpr TextMaker kTextMakers[] = {
    {type_code::CS, [](Dice& dice) { return Format("CODE_%u", dice.Below(1000)); }},
    {type_code::DA,
     [](Dice& dice) { return Format("2024%02u%02u", 1 + dice.Below(12), 1 + dice.Below(28)); }},
    {type_code::DS,
     [](Dice& dice) { return Format("%u.%03u", dice.Below(1000), dice.Below(1000)); }},
    {type_code::IS, [](Dice& dice) { return Format("%u", dice.Below(100000)); }},
    {type_code::LO, [](Dice& dice) { return Format("words of length %u", dice.Below(100000)); }},
    {type_code::SH, [](Dice& dice) { return Format("word %u", dice.Below(1000)); }},
    {type_code::TM,
     [](Dice& dice) {
       return Format("%02u%02u%02u", dice.Below(24), dice.Below(60), dice.Below(60));
     }},
    {type_code::UI, [](Dice& dice) { return MakeUid(dice.Roll()); }},
};

const TextMaker* FindMaker(VrCode type) {
  return std::find_if(std::begin(kTextMakers), std::end(kTextMakers),
                      [type](const TextMaker& maker) { return maker.type == type; });
}

}  // namespace

std::uint64_t Dice::Roll() {
  state_ += 0x9E3779B97F4A7C15U;
  std::uint64_t mixed = state_;
  mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
  mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
  return mixed ^ (mixed >> 31);
}

std::string MakeUid(std::uint64_t key) {
  // Two groups of 19 digits stay below 2^128.
  constexpr std::uint64_t kNineteenDigits = 10'000'000'000'000'000'000U;
  Dice dice(key);
  const std::uint64_t high = 1 + dice.Roll() % (kNineteenDigits - 1);
  const std::uint64_t low = dice.Roll() % kNineteenDigits;
  return Format("2.25.%llu%019llu", static_cast<unsigned long long>(high),
                static_cast<unsigned long long>(low));
}

bool HasRandomText(VrCode type) { return FindMaker(type) != std::end(kTextMakers); }

std::string RandomText(VrCode type, Dice& dice) { return FindMaker(type)->make(dice); }

}  // namespace tessaret::bench
