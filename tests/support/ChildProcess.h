// ChildProcess.h - kiTest::RunInChild: runs code in a forked child and reports
// how it ended and what it wrote, for fatal paths that print to standard output.
#ifndef KI_TESTS_SUPPORT_CHILDPROCESS_H
#define KI_TESTS_SUPPORT_CHILDPROCESS_H

#include <functional>
#include <string>

namespace kiTest {

struct ChildResult {
  int exitStatus;   // the exit status, or 128 + the signal when killed by one
  bool signaled;    // killed by a signal (also after the time limit: SIGKILL)
  std::string out;  // everything written to standard output
  std::string err;  // everything written to standard error
};

// Forks; the child sends standard output and standard error to pipes, runs
// `body`, flushes stdio and ends with _exit(0) when `body` returns. Whatever
// `body` changes (environment, log settings, files it opens) stays in the
// child. A body that ends the process itself (_exit, a fatal error) must flush
// its own stdio first, or the buffered text is lost. The parent reads both
// pipes to the end and waits; a child still running after 20 s is killed and
// the test fails. GoogleTest assertions inside `body` do not reach the parent:
// report through the exit status or the output. The body should stay simple
// (no new threads), which keeps it safe under ThreadSanitizer.
ChildResult RunInChild(const std::function<void()>& body);

}  // namespace kiTest

#endif  // KI_TESTS_SUPPORT_CHILDPROCESS_H
