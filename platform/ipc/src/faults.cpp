#include "faults.h"

#include <atomic>

namespace kxcom {
namespace {

std::atomic<int> g_failures[KXCOM_FAULT_KINDS];

}  // namespace

bool TakeFault(KXCOM_FAULT eCall) {
  std::atomic<int>& failures = g_failures[eCall];
  int left = failures.load();
  while (left > 0) {
    if (failures.compare_exchange_weak(left, left - 1)) return true;
  }
  return false;
}

}  // namespace kxcom

extern "C" void KXCOM_FailNext(KXCOM_FAULT eCall, int iTimes) {
  if (eCall < 0 || eCall >= KXCOM_FAULT_KINDS) return;
  kxcom::g_failures[eCall].store(iTimes > 0 ? iTimes : 0);
}
