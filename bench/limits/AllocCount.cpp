// The process's allocation functions, counted per thread and handed on to
// the C library's own. Built without sanitizers only: they bring their own
// allocator.
#include "AllocCount.h"

#include <cstddef>

namespace {
// Plain data of static storage: usable from the first allocation of a thread.
thread_local long t_lAllocations = 0;
}  // namespace

extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);

extern "C" void* malloc(size_t ulSize) {
  ++t_lAllocations;
  return __libc_malloc(ulSize);
}

extern "C" void* calloc(size_t ulCount, size_t ulSize) {
  ++t_lAllocations;
  return __libc_calloc(ulCount, ulSize);
}

extern "C" void* realloc(void* pvBlock, size_t ulSize) {
  ++t_lAllocations;
  return __libc_realloc(pvBlock, ulSize);
}

namespace limits {

long ThreadAllocations() {
  return t_lAllocations;
}

}  // namespace limits
