// kiMemTest.cpp - the heap wrappers: null in, null out, exact copies, and the
// fatal end of an exhausted heap.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "ki/proc/kiINIFile.h"
#include "ki/proc/kiMem.h"
#include "support/ChildProcess.h"

namespace {

TEST(MemTest, ZeroSizesAndNullsGiveNull) {
  EXPECT_EQ(nullptr, kiMem_Realloc(nullptr, 0));
  void* block = kiMem_Malloc(8);
  EXPECT_EQ(nullptr, kiMem_Realloc(block, 0));  // freed; the sanitizer sees no leak
  EXPECT_EQ(nullptr, kiMem_Strdup(nullptr));
  EXPECT_EQ(nullptr, kiMem_Strndup(nullptr, 4));
  EXPECT_EQ(nullptr, kiMem_Wcsdup(nullptr));
  EXPECT_EQ(nullptr, kiMem_Wcsndup(nullptr, 4));
  void* zero = kiMem_Malloc(0);  // a usable, freeable block
  EXPECT_NE(nullptr, zero);
  kiMem_Free(zero);
  kiMem_Free(nullptr);
}

TEST(MemTest, CopiesAreExact) {
  unsigned char* zeros = static_cast<unsigned char*>(kiMem_Calloc(64));
  for (int i = 0; i < 64; ++i) EXPECT_EQ(0, zeros[i]);
  kiMem_Free(zeros);

  char* grown = static_cast<char*>(kiMem_Realloc(nullptr, 4));
  std::memcpy(grown, "abc", 4);
  grown = static_cast<char*>(kiMem_Realloc(grown, 4096));
  EXPECT_STREQ("abc", grown);
  kiMem_Free(grown);

  char* n = kiMem_Strndup("a\0bcdef", 4);  // zero bytes inside are copied
  EXPECT_EQ(0, std::memcmp(n, "a\0bc\0", 5));
  kiMem_Free(n);

  const char16_t text[] = u"h\u00e9llo";
  char16_t* w = kiMem_Wcsdup(text);
  EXPECT_EQ(0, std::memcmp(w, text, sizeof text));
  kiMem_Free(w);
  char16_t* wn = kiMem_Wcsndup(text, 2);
  EXPECT_EQ(u'h', wn[0]);
  EXPECT_EQ(u'\u00e9', wn[1]);
  EXPECT_EQ(0, wn[2]);
  kiMem_Free(wn);
}

TEST(MemTest, AppendAndConcat) {
  char* held = nullptr;
  kiMem_StrAppend(&held, nullptr);
  EXPECT_EQ(nullptr, held);
  kiMem_StrAppend(&held, "ab");
  EXPECT_STREQ("ab", held);
  kiMem_StrAppend(&held, nullptr);
  EXPECT_STREQ("ab", held);
  kiMem_StrAppend(&held, held);  // its own text
  EXPECT_STREQ("abab", held);
  kiMem_Free(held);
  kiMem_StrAppend(nullptr, "x");  // ignored

  char* joined = kiMem_StrConcat("left", "right");
  EXPECT_STREQ("leftright", joined);
  kiMem_Free(joined);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KI_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KI_SANITIZED 1
#endif
#endif

// A heap that cannot grow ends the process with the wrapper's tag and size.
TEST(MemTest, ExhaustionIsFatal) {
#ifdef KI_SANITIZED
  GTEST_SKIP() << "the sanitizers reserve address space, so the heap cannot be limited";
#else
  struct Row {
    const char* tag;
    void (*call)();
  };
  const Row rows[] = {
      {"memory:malloc (size=1073741824)", [] { kiMem_Malloc(1u << 30); }},
      {"memory:realloc (size=1073741824)", [] { kiMem_Realloc(kiMem_Malloc(16), 1u << 30); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.tag);
    const kiTest::ChildResult r = kiTest::RunInChild([&] {
      const rlim_t limit = rlim_t{256} << 20;
      const struct rlimit rl = {limit, limit};
      setrlimit(RLIMIT_AS, &rl);
      row.call();
    });
    EXPECT_EQ(255, r.exitStatus);
    EXPECT_EQ(std::string("kiFatalError\nkiFatalError: ") + row.tag + "\n", r.out);
  }
#endif
}

// The array forms take count * size + extra in 64 bits: up to 0xFFFFFFFF
// bytes it is an ordinary block, one byte more is fatal with the whole total
// (saturated when even 64 bits cannot hold it), never a total cut to 32 bits.
TEST(MemTest, ArrayFormsRefuseTotalsPastTheBlockLimit) {
  void* empty = kiMem_MallocArray(0, 8);  // zero: a usable block, as kiMem_Malloc(0)
  EXPECT_NE(nullptr, empty);
  EXPECT_EQ(nullptr, kiMem_ReallocArray(empty, 1ull << 40, 0));  // a zero total frees
  unsigned char* zeros = static_cast<unsigned char*>(kiMem_CallocArray(3, 4, 2));
  for (int i = 0; i < 14; ++i) EXPECT_EQ(0, zeros[i]);
  kiMem_Free(zeros);

  struct Row {
    const char* what;
    void (*call)();
    std::string tag;  // empty: the block is had
  };
  const std::string saturated = std::to_string(UINTPTR_MAX);
  const Row rows[] = {
      // 0xFFFFFFFC + 3 bytes; left to the end of the child, which is cheaper
      // than freeing 4 GiB under the sanitizers.
      {"exact limit", [] { kiMem_MallocArray(0x55555554, 3, 3); }, ""},
      {"one past, cut to 0 in 32 bits", [] { kiMem_MallocArray(0x40000000, 4); },
       "memory:malloc (size=4294967296)"},
      {"one past through extra", [] { kiMem_CallocArray(0xFFFFFFFF, 1, 1); },
       "memory:malloc (size=4294967296)"},
      {"realloc one past", [] { kiMem_ReallocArray(kiMem_Malloc(16), 0x20000000, 8); },
       "memory:realloc (size=4294967296)"},
      {"product past 64 bits", [] { kiMem_MallocArray(1ull << 32, 1ull << 32); },
       "memory:malloc (size=" + saturated + ")"},
      {"sum past 64 bits", [] { kiMem_ReallocArray(nullptr, 1, ~0ull, 1); },
       "memory:realloc (size=" + saturated + ")"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const kiTest::ChildResult r = kiTest::RunInChild(row.call);
    if (row.tag.empty()) {
      EXPECT_EQ(0, r.exitStatus);
      EXPECT_EQ("", r.out);
    } else {
      EXPECT_EQ(255, r.exitStatus);
      EXPECT_EQ("kiFatalError\nkiFatalError: " + row.tag + "\n", r.out);
    }
  }
}

// The size detail of a fatal report on standard output; 0 when there is none.
unsigned long long ReportedSize(const std::string& out) {
  const size_t at = out.find("(size=");
  return at == std::string::npos ? 0 : std::strtoull(out.c_str() + at + 6, nullptr, 10);
}

// Tables sized as a count of records: a count whose bytes pass what one block
// can hold (0xFFFFFFFF) ends the process, rather than giving a block cut to 32
// bits that the table then writes past.
TEST(MemTest, TablesPastTheBlockLimitAreFatal) {
  for (const unsigned int records : {1u << 27, 0xFFFFFFFFu}) {
    SCOPED_TRACE(records);
    const kiTest::ChildResult r = kiTest::RunInChild([&] { kiINIFile_New(records); });
    EXPECT_EQ(255, r.exitStatus);
    EXPECT_EQ(0u, r.out.rfind("kiFatalError\nkiFatalError: memory:malloc (size=", 0)) << r.out;
    const unsigned long long size = ReportedSize(r.out);  // the whole request
    EXPECT_GT(size, 0xFFFFFFFFull);
    EXPECT_EQ(0u, size % records);
  }
}

}  // namespace
