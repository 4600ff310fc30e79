// kiPlatform.cpp - the process services on POSIX: the environment, programs
// started with posix_spawnp and reaped by a small thread each, and the host
// name from gethostname.
#include "ki/proc/kiPlatform.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiFatalError_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPlatform_p.h"
#include "ki/proc/kiTime.h"

// glibc closes every descriptor from a number up in the new process since 2.34.
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 34))
#define KI_POSIX_SPAWN_CLOSEFROM 1
#endif

KI_LOG_SOURCE("posix/kiPlatform")

namespace {

constexpr std::uint32_t kReadyMs = 5000;
constexpr int kReadySeconds = 5;
constexpr int kWaitTimedOut = 1;  // the library's result of a wait that timed out
constexpr std::size_t kReaperStack = 64 * 1024;

// The command as the messages name it.
char* CommandText(const char* program, const char* arguments) {
  if (program == nullptr) return kiMem_Strdup("(null)");
  if (arguments == nullptr || *arguments == '\0') return kiMem_Strdup(program);
  char* text = kiMem_StrConcat("\"", program);
  kiMem_StrAppend(&text, "\" ");
  kiMem_StrAppend(&text, arguments);
  return text;
}

void* ReapChild(void* argument) {
  const pid_t pid = static_cast<pid_t>(reinterpret_cast<std::intptr_t>(argument));
  int status = 0;
  kiPosix_RetryOnEINTR([&] { return waitpid(pid, &status, 0); });
  return nullptr;
}

// Starts a detached thread that waits for pid; 0 or the error number. The
// thread starts with every signal blocked, so no handler of the application
// runs on its small stack.
int WatchChild(pid_t pid) {
  pthread_attr_t attr;
  int error = pthread_attr_init(&attr);
  if (error != 0) return error;
  std::size_t stack = kReaperStack;
  const long least = sysconf(_SC_THREAD_STACK_MIN);
  if (least > 0 && static_cast<std::size_t>(least) > stack) stack = static_cast<std::size_t>(least);
  pthread_attr_setstacksize(&attr, stack);
  pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
  sigset_t all;
  sigset_t previous;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous);
  pthread_t thread;
  error = pthread_create(&thread, &attr, ReapChild,
                         reinterpret_cast<void*>(static_cast<std::intptr_t>(pid)));
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  pthread_attr_destroy(&attr);
  return error;
}

// The caller's environment less the fatal-error callback's variable: the
// address it holds means nothing in another process, and a program linking ki
// would call it on its own fatal error. The array is the caller's to free; the
// texts still belong to environ.
char** EnvironmentForChild() {
  const char* name = kiFatalError_VariableName();
  const std::size_t nameLength = std::strlen(name);
  std::size_t count = 0;
  while (environ[count] != nullptr) ++count;
  char** envp = static_cast<char**>(kiMem_MallocArray(count, sizeof(char*), sizeof(char*)));
  std::size_t kept = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const char* entry = environ[i];
    if (std::strncmp(entry, name, nameLength) == 0 && entry[nameLength] == '=') continue;
    envp[kept++] = environ[i];
  }
  envp[kept] = nullptr;
  return envp;
}

// posix_spawnp with default signal handling, an empty signal mask and, where
// the C library can, only descriptors 0 to 2 left open. 0 or the error number;
// glibc answers only once the new process has run exec or failed to.
int Spawn(const char* program, char* const* argv, pid_t* pid) {
  posix_spawnattr_t attr;
  int error = posix_spawnattr_init(&attr);
  if (error != 0) return error;
  posix_spawn_file_actions_t actions;
  error = posix_spawn_file_actions_init(&actions);
  if (error != 0) {
    posix_spawnattr_destroy(&attr);
    return error;
  }
  sigset_t none;
  sigset_t all;
  sigemptyset(&none);
  sigfillset(&all);
  error = posix_spawnattr_setsigmask(&attr, &none);
  if (error == 0) error = posix_spawnattr_setsigdefault(&attr, &all);
  if (error == 0) {
    error = posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
#if defined(KI_POSIX_SPAWN_CLOSEFROM)
  if (error == 0) error = posix_spawn_file_actions_addclosefrom_np(&actions, 3);
#endif
  if (error == 0) {
    char** envp = EnvironmentForChild();
    error = posix_spawnp(pid, program, &actions, &attr, argv, envp);
    kiMem_Free(envp);
  }
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attr);
  return error;
}

void LogUnableToLaunch(const char* program, const char* arguments, int error) {
  char* command = CommandText(program, arguments);
  KI_LOG(kiLogLevel_Error, kiLogCat_OS, "Unable to launch '%s' (Error = %d)\n", command, error);
  kiMem_Free(command);
}

}  // namespace

char* kiPlatform_GetEnv(const char* name) {
  if (name == nullptr) return nullptr;
  return kiMem_Strdup(getenv(name));
}

int kiPlatform_SetEnv(const char* name, const char* value) {
  if (name == nullptr) return -1;
  const int result = value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  return result == 0 ? 0 : -1;
}

int kiPlatform_Launch(const char* program, const char* arguments) {
  if (program == nullptr) {
    LogUnableToLaunch(program, arguments, EINVAL);
    return -1;
  }
  char** split = nullptr;
  const unsigned int count = kiCommandLine_Split(arguments, &split);
  if (count > UINT_MAX / sizeof(char*) - 2) {
    kiMem_Free(split);
    LogUnableToLaunch(program, arguments, E2BIG);
    return -1;
  }
  // argv[0] is the program path, then the arguments and the split's null.
  char** argv = static_cast<char**>(kiMem_MallocArray(count + 2ull, sizeof(char*)));
  argv[0] = const_cast<char*>(program);
  std::memcpy(argv + 1, split, (count + 1) * sizeof(char*));

  pid_t pid = -1;
  const std::uint32_t start = kiTime_GetTickCount();
  const int error = Spawn(program, argv, &pid);
  const std::uint32_t elapsed = kiTime_GetTickCount() - start;
  kiMem_Free(argv);
  kiMem_Free(split);
  if (error != 0) {
    LogUnableToLaunch(program, arguments, error);
    return -1;
  }

  const int watchError = WatchChild(pid);
  if (watchError != 0) {
    // The program runs, but stays a zombie from its end until this process ends.
    char* command = CommandText(program, arguments);
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "Unable to wait for the end of '%s' (Error = %d)\n",
           command, watchError);
    kiMem_Free(command);
  }
  if (elapsed > kReadyMs) {
    char* command = CommandText(program, arguments);
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "The application '%s' has not started before the %d seconds timeout (Error = %d, %d)\n",
           command, kReadySeconds, kWaitTimedOut, ETIMEDOUT);
    kiMem_Free(command);
    return -1;
  }
  return 0;
}

char* kiPlatform_GetHostName(const char* name) {
  if (name == nullptr || std::strcmp(name, "hostname") != 0) return nullptr;
  char host[64];
  if (gethostname(host, sizeof host) != 0) return nullptr;
  host[sizeof host - 1] = '\0';
  kiPlatform_ShortenHostName(host);
  return kiMem_Strdup(host);
}
