#include "encoder_settings.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace tessaret::codecs {
namespace {

struct Setting {
  const char* name;
  std::uint32_t EncoderSettings::*field;
  std::uint32_t least;
  std::uint32_t most;
};

constexpr Setting kSettings[] = {
    {"TESSARET_JPEG_QUALITY", &EncoderSettings::jpegQuality, 1, 100},
    {"TESSARET_JPEGLS_NEAR", &EncoderSettings::jpegLsNear, 0, 255},
    {"TESSARET_JPEG2000_RATIO", &EncoderSettings::jpeg2000Ratio, 1, 1000},
};

void Read(const Setting& setting, EncoderSettings& settings) {
  const char* text = std::getenv(setting.name);
  if (text == nullptr) return;
  const char* end = text + std::strlen(text);
  std::uint32_t value = 0;
  const auto [stop, error] = std::from_chars(text, end, value);
  if (error != std::errc() || stop != end) return;
  if (value >= setting.least && value <= setting.most) settings.*setting.field = value;
}

}  // namespace

EncoderSettings SettingsOfEnvironment() {
  EncoderSettings settings;
  for (const Setting& setting : kSettings) Read(setting, settings);
  return settings;
}

}  // namespace tessaret::codecs
