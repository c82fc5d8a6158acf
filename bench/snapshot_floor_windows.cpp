#include "platform/win32.h"
#include "snapshot_bench.h"

namespace {

class Section {
  public:
    Section() { InitializeCriticalSection(&section_); }
    ~Section() { DeleteCriticalSection(&section_); }
    Section(const Section&) = delete;
    Section& operator=(const Section&) = delete;
    void lock() { EnterCriticalSection(&section_); }
    void unlock() { LeaveCriticalSection(&section_); }

  private:
    CRITICAL_SECTION section_;
};

[[maybe_unused]] const bool registered = SnapshotFloors<Section>::Register();

}  // namespace
