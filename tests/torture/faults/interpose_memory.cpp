// The functions of memory. Operator new stands on malloc and throws when that gives none. A sanitizer has its
// own, which come first: there no allocation fails.
#include <cerrno>
#include <cstddef>

#include "torture/faults/faults.hpp"

using vantorium::torture::allocate;
using vantorium::torture::strikes;

extern "C" {

// The C library's own, under the names that it keeps for such as us: asking the loader would need memory.
void* __libc_malloc(std::size_t size);                     // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);       // NOLINT(bugprone-reserved-identifier)

void* malloc(std::size_t size) { return strikes(allocate, "malloc") ? nullptr : __libc_malloc(size); }

void* calloc(std::size_t count, std::size_t size) {
  return strikes(allocate, "calloc") ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
  return size > 0 && strikes(allocate, "realloc") ? nullptr : __libc_realloc(block, size);
}

}  // extern "C"
