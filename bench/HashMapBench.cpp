// HashMapBench.cpp - kiStringHashMap<void*> beside std::unordered_map<std::string,
// void*>: filling a map with n keys, and one lookup among n keys. The ki map
// has 11 fixed buckets, so its lookups walk about n / 22 entries (intended):
// the ratios grow with n. Cases run as BM_<Case>/ki/<n> and BM_<Case>/std/<n>.
#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <benchmark/benchmark.h>

#include "ki/containers/StringHashMap.h"

namespace {

// n distinct keys of the kind a configuration map holds ("key.00042").
std::vector<std::string> MakeKeys(int64_t n) {
  std::vector<std::string> keys;
  for (int64_t i = 0; i < n; ++i) {
    std::string digits = std::to_string(i);
    keys.push_back("key." + std::string(5 - std::min<size_t>(5, digits.size()), '0') + digits);
  }
  return keys;
}

void* ValueOf(size_t i) { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(i + 1)); }

// ---- Add: an empty map filled with n keys, then destroyed -------------------
// Both sides copy every key into the map.

void AddKi(benchmark::State& state) {
  const std::vector<std::string> keys = MakeKeys(state.range(0));
  for (auto _ : state) {
    kiStringHashMap<void*> map;
    for (size_t i = 0; i < keys.size(); ++i) map.Add(keys[i].c_str(), ValueOf(i));
    benchmark::DoNotOptimize(map.GetCount());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void AddStd(benchmark::State& state) {
  const std::vector<std::string> keys = MakeKeys(state.range(0));
  for (auto _ : state) {
    std::unordered_map<std::string, void*> map;
    for (size_t i = 0; i < keys.size(); ++i) map.insert_or_assign(keys[i], ValueOf(i));
    benchmark::DoNotOptimize(map.size());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// ---- Find: one present key per iteration, cycling through all n ------------

void FindKi(benchmark::State& state) {
  const std::vector<std::string> keys = MakeKeys(state.range(0));
  kiStringHashMap<void*> map;
  for (size_t i = 0; i < keys.size(); ++i) map.Add(keys[i].c_str(), ValueOf(i));
  size_t at = 0;
  for (auto _ : state) {
    void* value = nullptr;
    bool found = map.Find(keys[at].c_str(), value);
    benchmark::DoNotOptimize(found);
    benchmark::DoNotOptimize(value);
    if (++at == keys.size()) at = 0;
  }
  state.SetItemsProcessed(state.iterations());
}

void FindStd(benchmark::State& state) {
  const std::vector<std::string> keys = MakeKeys(state.range(0));
  std::unordered_map<std::string, void*> map;
  for (size_t i = 0; i < keys.size(); ++i) map.insert_or_assign(keys[i], ValueOf(i));
  size_t at = 0;
  for (auto _ : state) {
    auto it = map.find(keys[at]);
    benchmark::DoNotOptimize(it);
    if (++at == keys.size()) at = 0;
  }
  state.SetItemsProcessed(state.iterations());
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (int64_t n : {10, 100, 1000, 10000}) b->Arg(n);
}

BENCHMARK(AddKi)->Name("BM_HashMapAdd/ki")->Apply(Sizes);
BENCHMARK(AddStd)->Name("BM_HashMapAdd/std")->Apply(Sizes);
BENCHMARK(FindKi)->Name("BM_HashMapFind/ki")->Apply(Sizes);
BENCHMARK(FindStd)->Name("BM_HashMapFind/std")->Apply(Sizes);

}  // namespace
