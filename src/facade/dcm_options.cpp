#include "facade/dcm_options.h"

#include <atomic>
#include <mutex>
#include <new>

#include "platform/fork_locks.h"
#include "platform/settings_store.h"

namespace tessaret {
namespace {

constexpr const char* kGroup = "Software\\Halvorne\\Vandrel";
constexpr const char* kUseTotoku = "UseTotoku";

/// One for the process; nothing in the library draws by it.
constinit std::atomic<bool> useTotokuLut = false;

/// Whether it could be written makes no difference: for this process it holds.
void WriteOption(bool value) {
  try {
    WriteNumberSetting(kGroup, kUseTotoku, value ? 1 : 0);
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

void ReadOptions() {
  const auto number = ReadNumberSetting(kGroup, kUseTotoku);
  useTotokuLut = number && *number > 0;
}

CDCMOptions::CDCMOptions(IObject* outer) : ComponentObject(outer) {
  static constinit std::atomic<bool> isRead = false;
  if (isRead) return;
  const std::lock_guard lock(forkLocks.options);
  if (!isRead) ReadOptions();
  isRead = true;
}

Status CDCMOptions::get_UseTotokuLUT(VariantBool* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = useTotokuLut.load();
  return kOk;
}

Status CDCMOptions::put_UseTotokuLUT(VariantBool newVal) {
  const bool wanted = newVal.IsTrue();
  if (useTotokuLut.exchange(wanted) != wanted) WriteOption(wanted);
  return kOk;
}

}  // namespace tessaret
