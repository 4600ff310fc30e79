// kiFatalError.cpp - the fatal-error report, the callback kept in the process
// environment, and the end of the process.
#include "ki/proc/kiFatalError.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ki/proc/kiFatalError_p.h"
#include "ki/proc/kiLogError_p.h"
#include "ki/proc/kiPlatform.h"
#include "ki/proc/kiStr.h"

namespace {

// The environment is the callback's only storage, so every module of the
// process that carries its own copy of this code finds the same callback.
constexpr const char kCallbackVariable[] = "fatalerror.callback.ki";
constexpr size_t kAddressTextSize = 40;

const char* g_variableName = kCallbackVariable;

enum DetailKind { kDetailSize, kDetailReason, kDetailNone };

DetailKind DetailKindOf(const char* tag) {
  if (tag == nullptr) return kDetailNone;
  static const char* const kSizeTags[] = {"memory:malloc", "memory:realloc", "memory:strdup",
                                          "memory:wcsdup"};
  for (const char* known : kSizeTags) {
    if (std::strcmp(tag, known) == 0) return kDetailSize;
  }
  return std::strcmp(tag, "assert") == 0 ? kDetailReason : kDetailNone;
}

// No allocation here: the fatal path may be reporting an exhausted heap.
kiFatalErrorCallback RegisteredCallback() {
  const char* value = std::getenv(g_variableName);
  if (value == nullptr) return nullptr;
  char text[kAddressTextSize + 1];
  std::strncpy(text, value, kAddressTextSize);
  text[kAddressTextSize] = 0;
  std::uintptr_t address = 0;
  if (kiStr_ParseUIntPtr(text, &address) != 0 || address == 0) return nullptr;
  return reinterpret_cast<kiFatalErrorCallback>(address);
}

}  // namespace

void kiFatalError(const char* tag, std::uintptr_t detail, std::uintptr_t logDetail) {
  std::printf("kiFatalError\n");
  std::printf("kiFatalError: %s", tag != nullptr ? tag : "unknown reason");
  // Intended: a null tag is logged as it is, and prints "(null)".
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-overflow"
#endif
  kiLog_Error("Fatal Error '%s'", tag);
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

  // The console line shows detail and the log line logDetail: callers with
  // one value pass it as detail only, so only the console is sure to show it.
  switch (DetailKindOf(tag)) {
    case kDetailSize:
      std::printf(" (size=%lu)\n", static_cast<unsigned long>(detail));
      kiLog_Error(" (size=%lu)\n", static_cast<unsigned long>(logDetail));
      break;
    case kDetailReason:
      std::printf(" (reason='%s')\n", reinterpret_cast<const char*>(detail));
      kiLog_Error(" (reason='%s')\n", reinterpret_cast<const char*>(logDetail));
      break;
    case kDetailNone:
      std::printf("\n");
      kiLog_Error("\n");
      break;
  }
  // Our own lines reach a pipe or a file too; nothing else is flushed or run.
  std::fflush(stdout);

  kiFatalErrorCallback callback = RegisteredCallback();
  if (callback != nullptr) callback(tag);
  std::_Exit(-1);
}

void kiFatalError_SetCallback(kiFatalErrorCallback callback) {
  int stored;
  if (callback == nullptr) {
    stored = kiPlatform_SetEnv(g_variableName, nullptr);
  } else {
    // "0x" and hexadecimal digits on every platform, so that the text always
    // reads back through the number parser.
    char text[kAddressTextSize];
    std::snprintf(text, sizeof text, "0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(callback)));
    stored = kiPlatform_SetEnv(g_variableName, text);
  }
  if (stored != 0) {
    kiLog_Error(
        "kiFatalError: Cannot store callback address (fatal error callback will not be "
        "called)\n");
  }
}

void kiFatalError_SetVariableNameForTesting(const char* name) {
  g_variableName = name != nullptr ? name : kCallbackVariable;
}

const char* kiFatalError_VariableName() { return g_variableName; }
