// Semaphore.h - kiSemaphore, a counting semaphore of at most 32768 units.
#ifndef KI_OS_SEMAPHORE_H
#define KI_OS_SEMAPHORE_H

#include "ki/Export.h"

struct kiOSSemaphore;  // opaque; defined by the platform layer

// Construction never fails: when the system cannot make the semaphore, or the
// initial count is negative or above 32768, kiFatalError("os:semaphore") ends
// the process. Not copyable.
class KI_API kiSemaphore {
 public:
  explicit kiSemaphore(int initialCount);
  ~kiSemaphore();
  kiSemaphore(const kiSemaphore&) = delete;
  kiSemaphore& operator=(const kiSemaphore&) = delete;

  int Post();  // 0; 2 when the semaphore already holds 32768 units (logged)
  int Wait();  // 0; 2 on a system error (logged)
  // 0 acquired, 1 timed out, 2 error. A time-out of 0xFFFFFFFF or more never
  // expires. Waits are measured on a monotonic clock.
  int WaitTimeout(unsigned long ms);

 private:
  kiOSSemaphore* m_os;  // owned
};

#endif  // KI_OS_SEMAPHORE_H
