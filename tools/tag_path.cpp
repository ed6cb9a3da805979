#include "tag_path.h"

#include <charconv>

#include "tag_text.h"

namespace tessaret::tool {
namespace {

constexpr std::uint32_t kMostItems = 0x7FFFFFFF;

TagPath Failure(std::string words) { return {{}, std::move(words)}; }

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// Like a keyword: a letter first, no sign that a tag has.
bool LooksLikeKeyword(std::string_view name) {
  return name.find_first_of("(),") == std::string_view::npos &&
         name.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos;
}

std::string WhyNoElement(std::string_view name) {
  if (name.empty()) return "a tag is missing";
  if (LooksLikeKeyword(name)) return "no element has the keyword " + Quoted(name);
  return Quoted(name) + " is no tag: gggg,eeee is one, in hexadecimal digits, or a keyword";
}

std::optional<std::uint32_t> ParseItem(std::string_view digits) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
  return isWhole && number <= kMostItems ? std::optional(number) : std::nullopt;
}

/// A step as it is written: "(0008,1140)" and "0" of "(0008,1140)[0]".
struct StepText {
  std::string_view name;
  std::optional<std::string_view> item;
};

/// Why the part behind the name is wrong, or empty.
std::string Split(std::string_view text, StepText& step) {
  const std::size_t bracket = text.find('[');
  step.name = text.substr(0, bracket);
  if (bracket == std::string_view::npos) return {};
  if (!text.ends_with(']')) return Quoted(text) + " has a bracket that does not end it";
  step.item = text.substr(bracket + 1, text.size() - bracket - 2);
  return {};
}

}  // namespace

TagPath ParseTagPath(std::string_view text, Keywords& keywords) {
  TagPath path;
  for (;;) {
    const std::size_t end = text.find('.');
    const bool isLast = end == std::string_view::npos;
    StepText step;
    if (std::string why = Split(text.substr(0, end), step); !why.empty())
      return Failure(std::move(why));
    std::optional<TagKey> tag = ParseTag(step.name);
    if (!tag) tag = keywords.Find(std::string(step.name));
    if (!tag) return Failure(WhyNoElement(step.name));
    if (isLast && step.item)
      return Failure(Quoted(text) + " is an item: name an element of it, as in TAG[0].TAG");
    if (!isLast && !step.item)
      return Failure(Quoted(step.name) +
                     " wants the number of an item before the point, as in TAG[0].TAG");
    const auto item = step.item ? ParseItem(*step.item) : std::optional(std::uint32_t{0});
    if (!item) return Failure(Quoted(*step.item) + " is no number of an item: they count from 0");
    path.steps.push_back({*tag, *item});
    if (isLast) return path;
    text.remove_prefix(end + 1);
  }
}

std::string TextOf(const TagPath& path) {
  std::string text;
  for (const TagStep& step : path.steps) {
    if (!text.empty()) text.append("[").append(std::to_string((&step - 1)->item)).append("].");
    text += TagText(GroupOf(step.tag), ElementOf(step.tag));
  }
  return text;
}

}  // namespace tessaret::tool
