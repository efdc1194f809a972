// Counts the heap allocations of the calling thread: every malloc, calloc
// and realloc of the process passes through this program's replacements
// (operator new ends in malloc). Per thread, so that the servers and the
// requesters' threads running beside a measurement do not count.
#ifndef BENCH_LIMITS_ALLOC_COUNT_H
#define BENCH_LIMITS_ALLOC_COUNT_H

namespace limits {

long ThreadAllocations();

}  // namespace limits

#endif
