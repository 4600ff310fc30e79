// Timeout.h - kiTimeout, a millisecond stopwatch on the system tick counter
// that is safe across its wrap, and kiTimeoutQueue, an ordered list of running
// time-outs that its owner polls.
#ifndef KI_OS_TIMEOUT_H
#define KI_OS_TIMEOUT_H

#include <cstdint>

#include "ki/Export.h"

// The link by which a time-out sits in a queue; a queue's head is one too.
struct kiTimeoutLink {
  kiTimeoutLink* prev = nullptr;
  kiTimeoutLink* next = nullptr;
};

// A time-out counts down from its start on the 32-bit millisecond tick
// counter (kiTime_GetTickCount). Elapsed time is taken in unsigned 32-bit
// arithmetic, so the counter's wrap is harmless for any duration below about
// 49.7 days. A duration of 0xFFFFFFFF (or more) never runs out. A time-out
// never started is expired. It sits in at most one kiTimeoutQueue and leaves it
// when destroyed. Not locked: a time-out and its queue belong to one thread.
class KI_API kiTimeout : private kiTimeoutLink {
 public:
  kiTimeout() = default;
  // Start and duration are copied; the copy is in no queue (a queue holds
  // only the time-outs it was given).
  kiTimeout(const kiTimeout& other)
      : kiTimeoutLink(), m_start(other.m_start), m_duration(other.m_duration) {}
  // Takes the other's start and duration, and leaves its own queue: a
  // re-timed time-out is no longer in order there.
  kiTimeout& operator=(const kiTimeout& other);
  virtual ~kiTimeout();

  // Starts counting ms milliseconds from now.
  void Start(unsigned long ms);
  // Milliseconds left: 0 once the duration has elapsed; 0xFFFFFFFF for ever
  // for a duration of 0xFFFFFFFF.
  unsigned long Remaining() const;
  bool IsExpired() const { return Remaining() == 0; }

 protected:
  static unsigned long GetSysMSTickCount();

 private:
  friend class kiTimeoutQueue;
  void Unlink();
  bool IsLinked() const { return next != nullptr; }

  std::uint32_t m_start = 0;
  std::uint32_t m_duration = 0;
};

// Running time-outs ordered by remaining time, earliest first; time-outs with
// equal remaining time stay in the order they were started. The queue does
// not own its time-outs, fires nothing by itself and has no thread: its owner
// asks FirstExpiringTimeout() how long to sleep and calls
// HandleExpiredTimeouts() when it wakes. Not locked.
class KI_API kiTimeoutQueue {
 public:
  kiTimeoutQueue();
  // A copy starts empty: a time-out belongs to one queue.
  kiTimeoutQueue(const kiTimeoutQueue& other);
  // Keeps this queue's own time-outs.
  kiTimeoutQueue& operator=(const kiTimeoutQueue& other);
  // Takes its time-outs out of the queue; they stay alive and unlinked.
  virtual ~kiTimeoutQueue();

  // Takes t out of any queue, starts it with ms, and inserts it before the
  // first time-out with strictly more time left. Null t does nothing.
  void TimeoutStart(kiTimeout* t, unsigned long ms);
  // Takes t out of its queue; a time-out in no queue, or null, is left alone.
  void TimeoutCancel(kiTimeout* t);
  // The first time-out of the queue, or null when it is empty.
  virtual kiTimeout* FirstExpiringTimeout();
  // Calls OnTimeouts() once when FirstExpiringTimeout() has run out; at most
  // one call per invocation. OnTimeouts() is expected to cancel or restart
  // the time-out it handles; the owner calls again while time-outs are due.
  void HandleExpiredTimeouts();

 protected:
  virtual void OnTimeouts() = 0;

 private:
  kiTimeoutLink m_head;
};

#endif  // KI_OS_TIMEOUT_H
