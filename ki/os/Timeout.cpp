// Timeout.cpp - kiTimeout and kiTimeoutQueue.
#include "ki/os/Timeout.h"

#include "ki/os/Timeout_p.h"
#include "ki/proc/kiTime.h"

// ---- kiTimeout ---------------------------------------------------------------

kiTimeout& kiTimeout::operator=(const kiTimeout& other) {
  if (this != &other) {
    Unlink();
    m_start = other.m_start;
    m_duration = other.m_duration;
  }
  return *this;
}

kiTimeout::~kiTimeout() { Unlink(); }

void kiTimeout::Unlink() {
  if (!IsLinked()) return;
  prev->next = next;
  next->prev = prev;
  prev = nullptr;
  next = nullptr;
}

unsigned long kiTimeout::GetSysMSTickCount() { return kiTime_GetTickCount(); }

void kiTimeout::Start(unsigned long ms) {
  m_start = static_cast<std::uint32_t>(GetSysMSTickCount());
  m_duration = kiOS_TimeoutFromLong(ms);
}

unsigned long kiTimeout::Remaining() const {
  if (m_duration == kiOS_Infinite) return kiOS_Infinite;
  // Unsigned 32-bit: right across the wrap of the tick counter.
  const std::uint32_t elapsed = static_cast<std::uint32_t>(GetSysMSTickCount()) - m_start;
  return elapsed >= m_duration ? 0 : m_duration - elapsed;
}

// ---- kiTimeoutQueue ----------------------------------------------------------

kiTimeoutQueue::kiTimeoutQueue() {
  m_head.prev = &m_head;
  m_head.next = &m_head;
}

kiTimeoutQueue::kiTimeoutQueue(const kiTimeoutQueue&) : kiTimeoutQueue() {}

kiTimeoutQueue& kiTimeoutQueue::operator=(const kiTimeoutQueue&) { return *this; }

kiTimeoutQueue::~kiTimeoutQueue() {
  while (m_head.next != &m_head) static_cast<kiTimeout*>(m_head.next)->Unlink();
}

void kiTimeoutQueue::TimeoutStart(kiTimeout* t, unsigned long ms) {
  if (t == nullptr) return;
  t->Unlink();
  t->Start(ms);
  const unsigned long remaining = t->Remaining();
  kiTimeoutLink* at = m_head.next;
  while (at != &m_head && static_cast<kiTimeout*>(at)->Remaining() <= remaining) at = at->next;
  // Insert before `at` (the head itself: at the end).
  t->prev = at->prev;
  t->next = at;
  at->prev->next = t;
  at->prev = t;
}

void kiTimeoutQueue::TimeoutCancel(kiTimeout* t) {
  if (t != nullptr) t->Unlink();
}

kiTimeout* kiTimeoutQueue::FirstExpiringTimeout() {
  return m_head.next == &m_head ? nullptr : static_cast<kiTimeout*>(m_head.next);
}

void kiTimeoutQueue::HandleExpiredTimeouts() {
  kiTimeout* first = FirstExpiringTimeout();
  if (first != nullptr && first->Remaining() == 0) OnTimeouts();
}
