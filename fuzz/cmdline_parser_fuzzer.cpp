// cmdline_parser_fuzzer.cpp - the command-line parser: any arguments, split from
// the fuzzer's text, against one fixed table. Parse answers 0, 1 or -1; on success
// nothing is reported, every required option was found, numbers keep their 32-bit
// range and every positional value is one of the arguments.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "ki/config/CommandLineParser.h"
#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiMem.h"
#include <kiLog/Log.h>

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using kiFuzz::Check;

const kiCommandLineDescription kTable[] = {
    {kiCommandLineKind_Switch, "a", "a switch", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Switch, "ab", "a longer switch", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Switch, "h", "help", kiCommandLineParameterType_String,
     kiCommandLineFlag_Help},
    {kiCommandLineKind_Option, "n", "a number", kiCommandLineParameterType_Number, 0},
    {kiCommandLineKind_Option, "num", "a number after a separator",
     kiCommandLineParameterType_Number, kiCommandLineFlag_NeedSeparator},
    {kiCommandLineKind_Option, "s", "a string", kiCommandLineParameterType_String,
     kiCommandLineFlag_Required},
    {kiCommandLineKind_Option, "str", "another string", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Param, nullptr, "first", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Param, nullptr, "second", kiCommandLineParameterType_Number,
     kiCommandLineFlag_Optional},
    {kiCommandLineKind_Param, nullptr, "rest", kiCommandLineParameterType_String,
     kiCommandLineFlag_Optional | kiCommandLineFlag_Repeating},
    {kiCommandLineKind_End, nullptr, nullptr, kiCommandLineParameterType_String, 0}};

class Parser : public kiCommandLineParser {
 public:
  Parser(const kiCString& text, bool withProgramName)
      : kiCommandLineParser(kTable, text, withProgramName) {}
  using kiCommandLineParser::GetUsageString;
};

unsigned g_records = 0;

int CountRecord(void*, const kiLog_Entry*) {
  ++g_records;
  return 1;  // consumed: nothing reaches standard error
}

std::vector<std::string> Split(const char* text) {
  char** argv = nullptr;
  const unsigned int count = kiCommandLine_Split(text, &argv);
  std::vector<std::string> args(argv, argv + count);
  kiMem_Free(argv);
  return args;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // What the parser prints is not looked at; the log hook sees the same text.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 0;
  kiLog_SetCaptureHook(&CountRecord, nullptr, nullptr);
  kiLog_SetLevel(2);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0 || size > kMaxInput) return 0;
  const uint8_t mode = data[0];
  const bool printUsage = (mode & 1) != 0;
  const bool withProgramName = (mode & 2) != 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);

  Parser parser(kiCString(text.c_str()), withProgramName);
  g_records = 0;
  const int result = parser.Parse(printUsage);
  Check(result == 0 || result == 1 || result == -1, "Parse answered another value");
  Check((g_records == 0) == (result == 0 || (result == -1 && !printUsage)),
        "reported when it should not, or silent on an error");

  const std::vector<std::string> args = Split(text.c_str());
  if (result == 0) {
    Check(parser.Found("s"), "a required option is not found");
    long number = 0;
    if (parser.Found("n", &number)) {
      Check(number >= -2147483647L - 1 && number <= 2147483647L, "number out of range");
    }
    Check(parser.GetParameterCount() >= 1, "the required parameter is missing");
    for (unsigned i = 0; i < parser.GetParameterCount(); ++i) {
      const std::string value = parser.GetParameter(i).c_str();
      Check(std::find(args.begin(), args.end(), value) != args.end(),
            "a positional value is no argument");
    }
  }
  g_records = 0;
  parser.Found("ab");
  parser.Found("h");
  kiCString str;
  parser.Found("str", &str);
  Check(g_records == 0, "a declared query was logged");

  // A second Parse sees the same arguments and gives the same answer.
  Check(parser.Parse(false) == result, "Parse is not repeatable");
  Check(parser.GetUsageString().length() > 0, "empty usage");
  return 0;
}
