// ChildProcess.cpp - kiTest::RunInChild: fork, two pipes read with poll, a
// bounded wait.
#include "support/ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace kiTest {

namespace {

constexpr std::chrono::seconds kTimeLimit(20);

void CloseFd(int& fd) {
  if (fd >= 0) close(fd);
  fd = -1;
}

}  // namespace

ChildResult RunInChild(const std::function<void()>& body) {
  ChildResult result{-1, false, std::string(), std::string()};
  int outPipe[2];
  int errPipe[2];
  if (pipe2(outPipe, O_CLOEXEC) != 0) {
    ADD_FAILURE() << "RunInChild: pipe: " << std::strerror(errno);
    return result;
  }
  if (pipe2(errPipe, O_CLOEXEC) != 0) {
    ADD_FAILURE() << "RunInChild: pipe: " << std::strerror(errno);
    close(outPipe[0]);
    close(outPipe[1]);
    return result;
  }
  // Text the parent has buffered would otherwise be written again by the child.
  std::fflush(nullptr);
  pid_t pid = fork();
  if (pid == 0) {
    dup2(outPipe[1], STDOUT_FILENO);
    dup2(errPipe[1], STDERR_FILENO);
    if (body) body();
    std::fflush(nullptr);
    _exit(0);
  }
  close(outPipe[1]);
  close(errPipe[1]);
  if (pid < 0) {
    ADD_FAILURE() << "RunInChild: fork: " << std::strerror(errno);
    close(outPipe[0]);
    close(errPipe[0]);
    return result;
  }

  int fds[2] = {outPipe[0], errPipe[0]};
  std::string* sinks[2] = {&result.out, &result.err};
  auto deadline = std::chrono::steady_clock::now() + kTimeLimit;
  bool timedOut = false;
  while (fds[0] >= 0 || fds[1] >= 0) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      timedOut = true;
      break;
    }
    pollfd polled[2] = {{fds[0], POLLIN, 0}, {fds[1], POLLIN, 0}};  // -1 is skipped by poll
    int ready = poll(polled, 2, static_cast<int>(left.count()));
    if (ready < 0 && errno != EINTR) break;
    for (int i = 0; i < 2 && ready > 0; ++i) {
      if (polled[i].revents == 0) continue;
      char chunk[4096];
      ssize_t n = read(fds[i], chunk, sizeof chunk);
      if (n > 0) {
        sinks[i]->append(chunk, static_cast<std::size_t>(n));
      } else if (n == 0 || errno != EINTR) {
        CloseFd(fds[i]);
      }
    }
  }
  if (timedOut) {
    kill(pid, SIGKILL);
    ADD_FAILURE() << "RunInChild: the child ran longer than " << kTimeLimit.count()
                  << " s and was killed";
  }
  CloseFd(fds[0]);
  CloseFd(fds[1]);

  int status = 0;
  pid_t waited;
  do {
    waited = waitpid(pid, &status, 0);
  } while (waited < 0 && errno == EINTR);
  if (waited < 0) {
    ADD_FAILURE() << "RunInChild: waitpid: " << std::strerror(errno);
  } else if (WIFEXITED(status)) {
    result.exitStatus = WEXITSTATUS(status);
  } else if (WIFSIGNALED(status)) {
    result.signaled = true;
    result.exitStatus = 128 + WTERMSIG(status);
  }
  return result;
}

}  // namespace kiTest
