// INIBench.cpp - kiINIFile_Parse beside inih: a 4 KB and a 1 MB INI text
// (about 30 000 entries) loaded into a table. BM_INIParse/ki/<bytes> builds a
// kiINIFile (created and deleted in the loop); BM_INIParse/inih/<bytes> runs
// ini_parse_string and stores every entry as "section/key" -> value in a
// std::unordered_map, which gives it the same lookups the table offers.
// Without libinih only the ki side is built.
#include <string>
#include <unordered_map>

#include <benchmark/benchmark.h>

#include "ki/proc/kiINIFile.h"

#if defined(KI_HAVE_INIH)
#include <ini.h>
#endif

namespace {

// Sections of 60 entries with keys and values of mixed shapes (numbers,
// words, a quoted value now and then, comments), up to n bytes.
std::string MakeText(size_t n) {
  std::string text = "; generated settings\n";
  uint32_t x = 2024;
  auto next = [&x](uint32_t range) {
    x = x * 1664525u + 1013904223u;
    return (x >> 16) % range;
  };
  for (int section = 0; text.size() < n; ++section) {
    text += "\n[Section" + std::to_string(section) + "]\n";
    for (int k = 0; k < 60 && text.size() < n; ++k) {
      text += "Key" + std::to_string(k);
      switch (next(4)) {
        case 0:
          text += " = " + std::to_string(next(100000)) + "\n";
          break;
        case 1:
          text += "=value" + std::to_string(next(1000)) + " ; note\n";
          break;
        case 2:
          text += "=\"quoted text " + std::to_string(next(10)) + "\"\n";
          break;
        default:
          text += "=" + std::string(4 + next(12), static_cast<char>('a' + next(26))) + "\n";
      }
    }
  }
  return text;
}

const std::string& Text(int64_t bytes) {
  static const std::string small = MakeText(4096);
  static const std::string large = MakeText(1 << 20);
  return bytes <= 4096 ? small : large;
}

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(4096)->Arg(1 << 20); }

void ParseKi(benchmark::State& state) {
  const std::string& text = Text(state.range(0));
  for (auto _ : state) {
    kiINIFile* ini = kiINIFile_New(0);
    kiINIFile_Parse(text.data(), static_cast<unsigned>(text.size()), ini);
    benchmark::DoNotOptimize(ini);
    kiINIFile_Delete(ini);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(ParseKi)->Name("BM_INIParse/ki")->Apply(Sizes);

#if defined(KI_HAVE_INIH)
int Store(void* user, const char* section, const char* name, const char* value) {
  auto& map = *static_cast<std::unordered_map<std::string, std::string>*>(user);
  std::string key(section);
  key += '/';
  key += name;
  map[std::move(key)] = value;
  return 1;
}

void ParseInih(benchmark::State& state) {
  const std::string& text = Text(state.range(0));
  for (auto _ : state) {
    std::unordered_map<std::string, std::string> map;
    ini_parse_string(text.c_str(), Store, &map);
    benchmark::DoNotOptimize(map);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(ParseInih)->Name("BM_INIParse/inih")->Apply(Sizes);
#endif

}  // namespace
