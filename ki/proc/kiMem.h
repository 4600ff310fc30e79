// kiMem.h - heap wrappers that never fail: exhaustion ends the process through
// kiFatalError, so a well-formed request always answers a usable block.
#ifndef KI_PROC_KIMEM_H
#define KI_PROC_KIMEM_H

#include "ki/Export.h"

// Blocks from these functions are released with kiMem_Free (the ordinary heap
// free; null is ignored).

// A block of size bytes; 0 is passed to the heap as it is. Fatal
// "memory:malloc" on failure.
KI_API void* kiMem_Malloc(unsigned int size);
// kiMem_Malloc, then zero-filled.
KI_API void* kiMem_Calloc(unsigned int size);
// Null block and size 0: null, heap untouched. Size 0 frees the block and
// answers null. Fatal "memory:realloc" when a non-zero size cannot be had.
KI_API void* kiMem_Realloc(void* block, unsigned int size);
KI_API void kiMem_Free(void* block);

// Blocks for count items of size bytes, plus extra bytes (a header, a
// terminator): use these wherever a size is a count times an item size, so
// that no product is ever cut to the 32-bit size above. The total is taken in
// 64 bits; one past 0xFFFFFFFF, the most a block can hold, is fatal
// "memory:malloc" (kiMem_ReallocArray: "memory:realloc") with the total as the
// size detail, saturated at the largest std::uintptr_t when even 64 bits
// cannot hold it. Otherwise they are kiMem_Malloc, kiMem_Calloc and
// kiMem_Realloc of the total (a total of 0 given to kiMem_ReallocArray frees
// the block and answers null).
KI_API void* kiMem_MallocArray(unsigned long long count, unsigned long long size,
                               unsigned long long extra = 0);
KI_API void* kiMem_CallocArray(unsigned long long count, unsigned long long size,
                               unsigned long long extra = 0);
KI_API void* kiMem_ReallocArray(void* block, unsigned long long count, unsigned long long size,
                                unsigned long long extra = 0);

// Copies of narrow text; null in, null out. kiMem_Strdup failing is fatal
// "memory:strdup" with the source length; kiMem_Strndup copies exactly n bytes
// (zero bytes included) and adds a terminator.
KI_API char* kiMem_Strdup(const char* text);
KI_API char* kiMem_Strndup(const char* text, unsigned int n);

// Copies of 16-bit text (terminator included); null in, null out. Allocated
// through kiMem_Malloc, so failure reports "memory:malloc".
KI_API char16_t* kiMem_Wcsdup(const char16_t* text);
KI_API char16_t* kiMem_Wcsndup(const char16_t* text, unsigned int n);

// *held becomes *held followed by suffix, in a new block (the old one is
// freed). A held null becomes a copy of the suffix (null for a null suffix);
// a null suffix otherwise counts as empty. Null held is ignored.
KI_API void kiMem_StrAppend(char** held, const char* suffix);
// A new block holding first then second; null arguments count as empty.
KI_API char* kiMem_StrConcat(const char* first, const char* second);

#endif  // KI_PROC_KIMEM_H
