// CStringBench.cpp - kiCString beside std::string: copies, appends, searches,
// replacement and formatting. Each case runs as BM_<Case>/ki/<bytes> and
// BM_<Case>/std/<bytes> (plus BM_<Case>/std_<variant> where one peer idiom is
// not enough), so run_ratios.py can pair them.
#include <benchmark/benchmark.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

#include "ki/core/CString.h"

namespace {

constexpr int64_t kMB = 1 << 20;

// n bytes of pseudo-random lowercase letters and spaces from a fixed seed, so
// that memchr on a needle's first byte stops about every 27 bytes, as it
// would in ordinary text.
std::string MakeText(size_t n, uint32_t seed) {
  std::string text(n, ' ');
  uint32_t x = seed;
  for (char& c : text) {
    x = x * 1664525u + 1013904223u;
    const uint32_t v = (x >> 16) % 27u;
    c = v == 26 ? ' ' : static_cast<char>('a' + v);
  }
  return text;
}

// ---- Copy construction ------------------------------------------------------
// kiCString shares the block (a count increment); std::string copies the
// characters (every size here is past its 15-byte inline buffer).

template <typename S>
void CopyCase(benchmark::State& state) {
  const std::string text = MakeText(static_cast<size_t>(state.range(0)), 1);
  const S source(text.c_str());
  for (auto _ : state) {
    S copy(source);
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK_TEMPLATE(CopyCase, kiCString)->Name("BM_Copy/ki")->Arg(16)->Arg(64)->Arg(1024);
BENCHMARK_TEMPLATE(CopyCase, std::string)->Name("BM_Copy/std")->Arg(16)->Arg(64)->Arg(1024);

// ---- Appending single characters, from empty up to 1 MB ---------------------
// operator+= (char) on both sides; for std::string it is push_back.

template <typename S>
void AppendCharCase(benchmark::State& state) {
  const int64_t n = state.range(0);
  for (auto _ : state) {
    S s;
    for (int64_t i = 0; i < n; ++i) s += static_cast<char>('a' + (i & 15));
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(state.iterations() * n);
}
BENCHMARK_TEMPLATE(AppendCharCase, kiCString)
    ->Name("BM_AppendChar/ki")
    ->Arg(kMB)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(AppendCharCase, std::string)
    ->Name("BM_AppendChar/std")
    ->Arg(kMB)
    ->Unit(benchmark::kMillisecond);

// ---- Find: a 16-byte needle near the end of 1 MB of text --------------------

struct FindInput {
  std::string haystack;
  std::string needle;
  size_t at;
};

FindInput MakeFindInput(size_t n) {
  FindInput in{MakeText(n, 7), MakeText(16, 11), n - 100};
  in.haystack.replace(in.at, in.needle.size(), in.needle);
  return in;
}

void FindKi(benchmark::State& state) {
  const FindInput in = MakeFindInput(static_cast<size_t>(state.range(0)));
  const kiCString haystack(in.haystack.c_str(), static_cast<unsigned int>(in.haystack.size()));
  const kiCString needle(in.needle.c_str());
  if (haystack.Find(needle) != in.at) state.SkipWithError("the needle is not where it was put");
  for (auto _ : state) {
    unsigned int pos = haystack.Find(needle);
    benchmark::DoNotOptimize(pos);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void FindStd(benchmark::State& state) {
  const FindInput in = MakeFindInput(static_cast<size_t>(state.range(0)));
  if (in.haystack.find(in.needle) != in.at) state.SkipWithError("the needle is not where it was put");
  for (auto _ : state) {
    size_t pos = in.haystack.find(in.needle);
    benchmark::DoNotOptimize(pos);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FindKi)->Name("BM_Find/ki")->Arg(kMB)->Unit(benchmark::kMicrosecond);
BENCHMARK(FindStd)->Name("BM_Find/std")->Arg(kMB)->Unit(benchmark::kMicrosecond);

// ---- Replace every "abcd" by "xyz12" in 1 MB ----------------------------------
// 60 bytes of text, then "abcd": one occurrence every 64 bytes. Every side
// first makes a private copy of the input inside the timing (for kiCString a
// real copy, not a shared block), so the copies cost the same.

const char kOld[] = "abcd";
const char kNew[] = "xyz12";

std::string MakeReplaceInput(size_t n) {
  std::string text = MakeText(n, 3);
  for (size_t at = 60; at + 4 <= n; at += 64) text.replace(at, 4, kOld);
  return text;
}

void ReplaceKi(benchmark::State& state) {
  const std::string text = MakeReplaceInput(static_cast<size_t>(state.range(0)));
  const kiCString source(text.c_str(), static_cast<unsigned int>(text.size()));
  for (auto _ : state) {
    kiCString s(source.c_str(), source.length());
    unsigned int count = s.Replace(kOld, kNew, true);
    benchmark::DoNotOptimize(count);
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// The usual in-place loop: find, replace, resume after the inserted text.
// Every replacement moves the rest of the string, so its cost grows with the
// square of the size.
void ReplaceStdInPlace(benchmark::State& state) {
  const std::string source = MakeReplaceInput(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    std::string s(source);
    size_t count = 0;
    for (size_t pos = s.find(kOld); pos != std::string::npos;
         pos = s.find(kOld, pos + sizeof kNew - 1)) {
      s.replace(pos, sizeof kOld - 1, kNew);
      ++count;
    }
    benchmark::DoNotOptimize(count);
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// The linear idiom: build the result in a second string, then take it over,
// which is what kiCString::Replace does inside.
void ReplaceStdBuild(benchmark::State& state) {
  const std::string source = MakeReplaceInput(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    std::string s(source);
    std::string out;
    out.reserve(s.size());
    size_t count = 0;
    size_t from = 0;
    for (size_t pos = s.find(kOld); pos != std::string::npos;
         pos = s.find(kOld, pos + sizeof kOld - 1)) {
      out.append(s, from, pos - from).append(kNew, sizeof kNew - 1);
      from = pos + sizeof kOld - 1;
      ++count;
    }
    out.append(s, from, std::string::npos);
    s.swap(out);
    benchmark::DoNotOptimize(count);
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ReplaceKi)->Name("BM_Replace/ki")->Arg(kMB)->Unit(benchmark::kMillisecond);
BENCHMARK(ReplaceStdInPlace)->Name("BM_Replace/std")->Arg(kMB)->Unit(benchmark::kMillisecond);
BENCHMARK(ReplaceStdBuild)->Name("BM_Replace/std_build")->Arg(kMB)->Unit(benchmark::kMillisecond);

// ---- Printf: a mixed line of 100, 2000 and 4000 characters ------------------
// The %s at the end is stretched to reach the size. kiCString::Printf starts
// with room for 1024 characters and grows by one per retry (intended), so the
// two long sizes show its quadratic cost.

const char kLineFormat[] = "%s: item %d of %s, value %.3f, flags 0x%08x, note %s";

struct LineArgs {
  const char* name = "bench-record";
  int item = 12345;
  const char* group = "the-catalogue";
  double value = 3.14159;
  unsigned int flags = 0xBEEFu;
  std::string note;

  explicit LineArgs(size_t total) {
    const int fixed = std::snprintf(nullptr, 0, kLineFormat, name, item, group, value, flags, "");
    note = MakeText(total - static_cast<size_t>(fixed), 5);
  }
};

// The idiomatic fast way for std::string: format into a stack buffer and
// assign; only a longer result is measured by that first call and formatted
// a second time straight into the resized string.
KI_PRINTF(2, 3) void StdPrintf(std::string& out, const char* format, ...) {
  char buffer[512];
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  const int n = std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  if (n < 0) {
    out.clear();
  } else if (static_cast<size_t>(n) < sizeof buffer) {
    out.assign(buffer, static_cast<size_t>(n));
  } else {
    out.resize(static_cast<size_t>(n));
    std::vsnprintf(&out[0], static_cast<size_t>(n) + 1, format, again);
  }
  va_end(again);
}

void PrintfKi(benchmark::State& state) {
  const LineArgs a(static_cast<size_t>(state.range(0)));
  kiCString s;
  for (auto _ : state) {
    s.Printf(kLineFormat, a.name, a.item, a.group, a.value, a.flags, a.note.c_str());
    benchmark::DoNotOptimize(s);
  }
  if (s.length() != state.range(0)) state.SkipWithError("wrong length");
}

void PrintfStd(benchmark::State& state) {
  const LineArgs a(static_cast<size_t>(state.range(0)));
  std::string s;
  for (auto _ : state) {
    StdPrintf(s, kLineFormat, a.name, a.item, a.group, a.value, a.flags, a.note.c_str());
    benchmark::DoNotOptimize(s);
  }
  if (static_cast<int64_t>(s.size()) != state.range(0)) state.SkipWithError("wrong length");
}
BENCHMARK(PrintfKi)->Name("BM_Printf/ki")->Arg(100)->Arg(2000)->Arg(4000);
BENCHMARK(PrintfStd)->Name("BM_Printf/std")->Arg(100)->Arg(2000)->Arg(4000);

}  // namespace
