// ThreadTestSupport.h - bounded waits for the thread tests: a deadlock fails
// the test instead of hanging it.
#ifndef KI_TESTS_OS_THREADTESTSUPPORT_H
#define KI_TESTS_OS_THREADTESTSUPPORT_H

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <thread>

namespace kiTest {

// Polls until done() is true or the limit passes; answers done().
inline bool WaitUntil(const std::function<bool()>& done,
                      std::chrono::milliseconds limit = std::chrono::seconds(5)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) return done();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Runs body on a thread of its own and waits at most limit for it. A body
// still blocked then is a deadlock: the process ends with a message, since a
// blocked thread cannot be stopped.
inline void RunBounded(const char* what, std::function<void()> body,
                       std::chrono::seconds limit = std::chrono::seconds(20)) {
  std::packaged_task<void()> task(std::move(body));
  std::future<void> done = task.get_future();
  std::thread runner(std::move(task));
  if (done.wait_for(limit) != std::future_status::ready) {
    std::fprintf(stderr, "%s: no progress within %lld s (deadlock?)\n", what,
                 static_cast<long long>(limit.count()));
    std::fflush(stderr);
    std::abort();
  }
  runner.join();
}

}  // namespace kiTest

#endif  // KI_TESTS_OS_THREADTESTSUPPORT_H
