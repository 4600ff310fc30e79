// CommandLineText.h - arguments joined into one command-line text with
// kiCommandLine_Join, for tests that launch programs or check the quoting.
#ifndef KI_TESTS_SUPPORT_COMMANDLINETEXT_H
#define KI_TESTS_SUPPORT_COMMANDLINETEXT_H

#include <string>
#include <vector>

#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiMem.h"

namespace kiTest {

inline std::string JoinArguments(const std::vector<std::string>& args) {
  std::vector<const char*> pointers;
  for (const std::string& a : args) pointers.push_back(a.c_str());
  char* text = kiCommandLine_Join(pointers.data(), static_cast<unsigned int>(pointers.size()));
  std::string joined = text;
  kiMem_Free(text);
  return joined;
}

}  // namespace kiTest

#endif  // KI_TESTS_SUPPORT_COMMANDLINETEXT_H
