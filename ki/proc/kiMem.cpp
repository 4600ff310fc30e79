// kiMem.cpp - the heap wrappers: every failure goes to kiFatalError.
#include "ki/proc/kiMem.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "ki/proc/kiFatalError.h"

namespace {

size_t WideLength(const char16_t* text) {
  size_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

// The one allocation path; sizes are computed in size_t so that no sum can
// wrap. The fatal detail is the size as the caller asked for it.
void* Allocate(size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr && size == 0) block = std::malloc(1);  // some heaps answer null for 0
  if (block == nullptr) kiFatalError("memory:malloc", size);
  return block;
}

// count * size + extra as a block size, or the end of the process with tag
// when the total passes what the unsigned int size of the wrappers holds.
unsigned int ArrayBytes(unsigned long long count, unsigned long long size, unsigned long long extra,
                        const char* tag) {
  unsigned long long total = 0;
  const bool wrapped =
      __builtin_mul_overflow(count, size, &total) || __builtin_add_overflow(total, extra, &total);
  if (!wrapped && total <= 0xFFFFFFFFu) return static_cast<unsigned int>(total);
  // The detail is the size asked for, saturated where the detail cannot hold it.
  const auto detail = static_cast<std::uintptr_t>(total);
  kiFatalError(tag, !wrapped && detail == total ? detail : UINTPTR_MAX);
}

}  // namespace

void* kiMem_Malloc(unsigned int size) { return Allocate(size); }

void* kiMem_Calloc(unsigned int size) {
  void* block = kiMem_Malloc(size);
  std::memset(block, 0, size);
  return block;
}

void* kiMem_Realloc(void* block, unsigned int size) {
  if (block == nullptr && size == 0) return nullptr;
  if (size == 0) {
    std::free(block);  // what realloc(p, 0) does, spelt out
    return nullptr;
  }
  void* grown = std::realloc(block, size);
  if (grown == nullptr) kiFatalError("memory:realloc", size);
  return grown;
}

void kiMem_Free(void* block) { std::free(block); }

void* kiMem_MallocArray(unsigned long long count, unsigned long long size,
                        unsigned long long extra) {
  return Allocate(ArrayBytes(count, size, extra, "memory:malloc"));
}

void* kiMem_CallocArray(unsigned long long count, unsigned long long size,
                        unsigned long long extra) {
  return kiMem_Calloc(ArrayBytes(count, size, extra, "memory:malloc"));
}

void* kiMem_ReallocArray(void* block, unsigned long long count, unsigned long long size,
                         unsigned long long extra) {
  return kiMem_Realloc(block, ArrayBytes(count, size, extra, "memory:realloc"));
}

char* kiMem_Strdup(const char* text) {
  if (text == nullptr) return nullptr;
  const size_t length = std::strlen(text);
  char* copy = static_cast<char*>(std::malloc(length + 1));
  if (copy == nullptr) kiFatalError("memory:strdup", static_cast<unsigned int>(length));
  std::memcpy(copy, text, length + 1);
  return copy;
}

char* kiMem_Strndup(const char* text, unsigned int n) {
  if (text == nullptr) return nullptr;
  char* copy = static_cast<char*>(Allocate(size_t{n} + 1));
  std::memcpy(copy, text, n);  // zero bytes inside are copied as they are
  copy[n] = 0;
  return copy;
}

char16_t* kiMem_Wcsdup(const char16_t* text) {
  if (text == nullptr) return nullptr;
  const size_t bytes = 2 * (WideLength(text) + 1);
  char16_t* copy = static_cast<char16_t*>(Allocate(bytes));
  std::memcpy(copy, text, bytes);
  return copy;
}

char16_t* kiMem_Wcsndup(const char16_t* text, unsigned int n) {
  if (text == nullptr) return nullptr;
  char16_t* copy = static_cast<char16_t*>(Allocate(2 * size_t{n} + 2));
  std::memcpy(copy, text, 2 * static_cast<size_t>(n));
  copy[n] = 0;
  return copy;
}

void kiMem_StrAppend(char** held, const char* suffix) {
  if (held == nullptr) return;
  if (*held == nullptr) {
    *held = kiMem_Strdup(suffix);
    return;
  }
  const size_t a = std::strlen(*held);
  const size_t b = suffix != nullptr ? std::strlen(suffix) : 0;
  char* joined = static_cast<char*>(Allocate(a + b + 1));
  std::memcpy(joined, *held, a);
  if (b != 0) std::memcpy(joined + a, suffix, b);
  joined[a + b] = 0;
  std::free(*held);
  *held = joined;
}

char* kiMem_StrConcat(const char* first, const char* second) {
  const size_t a = first != nullptr ? std::strlen(first) : 0;
  const size_t b = second != nullptr ? std::strlen(second) : 0;
  char* joined = static_cast<char*>(Allocate(a + b + 1));
  if (a != 0) std::memcpy(joined, first, a);
  if (b != 0) std::memcpy(joined + a, second, b);
  joined[a + b] = 0;
  return joined;
}
