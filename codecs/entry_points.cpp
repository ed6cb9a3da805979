// What the engine calls by name.
#include <dlfcn.h>

#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "image_codec.h"
#include "syntax_table.h"
#include "tessaret/codec.h"

namespace tessaret {
namespace {

using codecs::ImageCodec;
using codecs::Syntax;
using codecs::Syntaxes;

/// Engines come and go with every file. To load this library and those it stands on for each of them would take longer than to decode
/// a small image, so from the first codec on it stays; a mere look at its list lets it go again.
void StayLoaded() {
  Dl_info self{};
  if (dladdr(reinterpret_cast<const void*>(&StayLoaded), &self) == 0) return;
  void* handle = dlopen(self.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
  if (handle != nullptr) dlclose(handle);
}

const Syntax* SyntaxAt(std::uint32_t index) {
  return index < Syntaxes().size() ? &Syntaxes()[index] : nullptr;
}

}  // namespace

std::uint32_t DcmGetCodecCount() { return static_cast<std::uint32_t>(Syntaxes().size()); }

CodecBool DcmGetCodecProps(std::uint32_t index, CodecProps* props) {
  const Syntax* syntax = SyntaxAt(index);
  if (syntax == nullptr || props == nullptr) return 0;
  *props = {};
  std::strncpy(props->UID, syntax->uid, sizeof props->UID - 1);
  props->Flags = TESSARET_CODEC_CONCURRENT;
  if (syntax->coder == nullptr) props->Flags |= TESSARET_CODEC_NATIVE;
  return 1;
}

DcmCodec* DcmGetCodec(std::uint32_t index) {
  const Syntax* syntax = SyntaxAt(index);
  if (syntax == nullptr) return nullptr;
  StayLoaded();
  return new (std::nothrow) ImageCodec(*syntax, codecs::SettingsOfEnvironment());
}

void DcmFreeCodec(DcmCodec* codec) { delete static_cast<ImageCodec*>(codec); }

}  // namespace tessaret
