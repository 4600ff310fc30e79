// ListBench.cpp - kiList<void*> beside std::list<void*>: filling and emptying
// from either end, and a forward walk. Each case runs as BM_<Case>/ki/<n> and
// BM_<Case>/std/<n>, n being the number of items, so run_ratios.py can pair
// them.
#include <cstdint>
#include <list>

#include <benchmark/benchmark.h>

#include "ki/containers/List.h"

namespace {

using KiList = kiList<void*>;
using StdList = std::list<void*>;

void* Value(int64_t i) { return reinterpret_cast<void*>(static_cast<uintptr_t>(i) * 8u); }

void PushBack(KiList& l, void* v) { l.push_back(v); }
void PushBack(StdList& l, void* v) { l.push_back(v); }
void PushFront(KiList& l, void* v) { l.push_front(v); }
void PushFront(StdList& l, void* v) { l.push_front(v); }
void* PopFront(KiList& l) {
  void* v = l.front();
  l.pop_front();
  return v;
}
void* PopFront(StdList& l) {
  void* v = l.front();
  l.pop_front();
  return v;
}
void* PopBack(KiList& l) {
  void* v = l.back();
  l.pop_back();
  return v;
}
void* PopBack(StdList& l) {
  void* v = l.back();
  l.pop_back();
  return v;
}

// ---- Queue use: push_back n items, then pop_front them all ------------------

template <typename L>
void PushPopCase(benchmark::State& state) {
  const int64_t n = state.range(0);
  L list;
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) PushBack(list, Value(i));
    for (int64_t i = 0; i < n; ++i) benchmark::DoNotOptimize(PopFront(list));
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK_TEMPLATE(PushPopCase, KiList)->Name("BM_ListPushPop/ki")->Arg(16)->Arg(1024)->Arg(65536);
BENCHMARK_TEMPLATE(PushPopCase, StdList)
    ->Name("BM_ListPushPop/std")
    ->Arg(16)
    ->Arg(1024)
    ->Arg(65536);

// ---- Stack use at the front: push_front n items, then pop_back them all ------

template <typename L>
void PushFrontPopBackCase(benchmark::State& state) {
  const int64_t n = state.range(0);
  L list;
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) PushFront(list, Value(i));
    for (int64_t i = 0; i < n; ++i) benchmark::DoNotOptimize(PopBack(list));
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK_TEMPLATE(PushFrontPopBackCase, KiList)
    ->Name("BM_ListPushFrontPopBack/ki")
    ->Arg(16)
    ->Arg(1024)
    ->Arg(65536);
BENCHMARK_TEMPLATE(PushFrontPopBackCase, StdList)
    ->Name("BM_ListPushFrontPopBack/std")
    ->Arg(16)
    ->Arg(1024)
    ->Arg(65536);

// ---- A forward walk over n items, summing the values --------------------------
// ki opens an iterator (it joins the list's chain) and steps it; std uses a
// range for.

void WalkKi(benchmark::State& state) {
  const int64_t n = state.range(0);
  KiList list;
  for (int64_t i = 0; i < n; ++i) list.push_back(Value(i));
  for (auto _ : state) {
    uintptr_t sum = 0;
    KiList::ForwardIterator it(&list);
    while (it.Next()) sum += reinterpret_cast<uintptr_t>(it.GetItem()->Get());
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(WalkKi)->Name("BM_ListWalk/ki")->Arg(16)->Arg(1024)->Arg(65536);

void WalkStd(benchmark::State& state) {
  const int64_t n = state.range(0);
  StdList list;
  for (int64_t i = 0; i < n; ++i) list.push_back(Value(i));
  for (auto _ : state) {
    uintptr_t sum = 0;
    for (void* v : list) sum += reinterpret_cast<uintptr_t>(v);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(WalkStd)->Name("BM_ListWalk/std")->Arg(16)->Arg(1024)->Arg(65536);

}  // namespace
