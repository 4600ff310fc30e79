// ThreadBench.cpp - kiCondition and kiMutex beside their standard peers: a
// ping-pong of two threads handing a turn back and forth, and uncontended
// lock/unlock pairs. Cases run as BM_<Case>/ki/<n> beside BM_<Case>/std/<n>
// (BM_<Case>/std_recursive/<n> for the lock), so run_ratios.py can pair them.
//
// The ping-pong measures wake-ups, so its numbers depend on how the scheduler
// places the two threads; the pairs are only comparable with both threads on
// one CPU, where every wake-up is a context switch. The std round trip costs
// two of them. kiCondition::Signal returns only once the woken thread has taken
// the signal, and that thread then waits for the event's guard, which the
// signaller still holds; so a ki round trip costs about seven, and the ratio
// sits near 0.3. Run the threaded pairs as
// clang-format off
//   taskset -c 0 python3 bench/run_ratios.py build-rel/bench/kiBench --benchmark_filter='CondPingPong|MutexLockUnlock'
// clang-format on
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <benchmark/benchmark.h>

#include "ki/os/Condition.h"
#include "ki/os/Mutex.h"

namespace {

// Starts the partner thread; false when the system cannot make one.
template <typename Body>
bool StartPartner(std::thread& thread, Body body) {
  try {
    thread = std::thread(std::move(body));
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

// ---- Ping-pong: the benchmark thread pings, the partner answers with a pong --
// Each state iteration is <rounds> round trips. The partner is started before
// the timed loop and stopped and joined after it.

// Two auto-reset events. A signal given while nobody waits is kept by the
// event, so neither side can miss one; the stop flag is read after every wake
// and a last ping releases the partner.
struct KiPingPong {
  kiCondition ping;
  kiCondition pong;
  std::atomic<bool> stop{false};
  // Pongs the partner has sent, raised before each one: after the n-th pong
  // wakes the benchmark thread it reads n, or a wait returned without its
  // signal.
  std::atomic<int64_t> answered{0};
};

void KiPartner(KiPingPong* p) {
  for (;;) {
    p->ping.Wait();
    if (p->stop.load(std::memory_order_acquire)) return;
    p->answered.store(p->answered.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    p->pong.Signal();
  }
}

void PingPongKi(benchmark::State& state) {
  const int64_t rounds = state.range(0);
  KiPingPong p;
  std::thread partner;
  if (!StartPartner(partner, [&p] { KiPartner(&p); })) {
    state.SkipWithError("cannot start the partner thread");
    return;
  }
  int64_t sent = 0;
  bool lost = false;
  for (auto _ : state) {
    for (int64_t r = 0; r < rounds && !lost; ++r) {
      p.ping.Signal();
      p.pong.Wait();
      lost = p.answered.load(std::memory_order_relaxed) != ++sent;
    }
    if (lost) {
      state.SkipWithError("a pong wait returned without the partner's signal");
      break;
    }
  }
  p.stop.store(true, std::memory_order_release);
  p.ping.Signal();
  partner.join();
  state.SetItemsProcessed(state.iterations() * rounds);
}

// The usual standard handshake: a turn flag under one mutex, a condition
// variable for each direction, waits with a predicate, notifications given
// after the mutex is released.
struct StdPingPong {
  std::mutex mutex;
  std::condition_variable ping;
  std::condition_variable pong;
  bool partnersTurn = false;  // guarded by mutex
  bool stop = false;          // guarded by mutex
};

void StdPartner(StdPingPong* p) {
  std::unique_lock<std::mutex> lock(p->mutex);
  for (;;) {
    p->ping.wait(lock, [p] { return p->partnersTurn || p->stop; });
    if (p->stop) return;
    p->partnersTurn = false;
    lock.unlock();
    p->pong.notify_one();
    lock.lock();
  }
}

void PingPongStd(benchmark::State& state) {
  const int64_t rounds = state.range(0);
  StdPingPong p;
  std::thread partner;
  if (!StartPartner(partner, [&p] { StdPartner(&p); })) {
    state.SkipWithError("cannot start the partner thread");
    return;
  }
  for (auto _ : state) {
    for (int64_t r = 0; r < rounds; ++r) {
      {
        std::lock_guard<std::mutex> lock(p.mutex);
        p.partnersTurn = true;
      }
      p.ping.notify_one();
      std::unique_lock<std::mutex> lock(p.mutex);
      p.pong.wait(lock, [&p] { return !p.partnersTurn; });
    }
  }
  {
    std::lock_guard<std::mutex> lock(p.mutex);
    p.stop = true;
  }
  p.ping.notify_one();
  partner.join();
  state.SetItemsProcessed(state.iterations() * rounds);
}

BENCHMARK(PingPongKi)->Name("BM_CondPingPong/ki")->Arg(1000)->UseRealTime();
BENCHMARK(PingPongStd)->Name("BM_CondPingPong/std")->Arg(1000)->UseRealTime();

// ---- Lock/unlock: n uncontended Lock()/Unlock() pairs on one mutex ----------
// Both mutexes are recursive. The memory clobber inside the lock stands for
// the guarded work and keeps the pairs from being merged.

void LockUnlockKi(benchmark::State& state) {
  const int64_t n = state.range(0);
  kiMutex mutex;
  int failures = 0;  // Lock and Unlock answer 0 on success
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) {
      failures += mutex.Lock();
      benchmark::ClobberMemory();
      failures += mutex.Unlock();
    }
  }
  if (failures != 0) state.SkipWithError("Lock or Unlock failed");
  state.SetItemsProcessed(state.iterations() * n);
}

void LockUnlockStdRecursive(benchmark::State& state) {
  const int64_t n = state.range(0);
  std::recursive_mutex mutex;
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) {
      mutex.lock();
      benchmark::ClobberMemory();
      mutex.unlock();
    }
  }
  state.SetItemsProcessed(state.iterations() * n);
}

BENCHMARK(LockUnlockKi)->Name("BM_MutexLockUnlock/ki")->Arg(1000);
BENCHMARK(LockUnlockStdRecursive)->Name("BM_MutexLockUnlock/std_recursive")->Arg(1000);

}  // namespace
