// cmdline_split_fuzzer.cpp - argument texts: any text split, joined and split
// again gives the same arguments. The input cut at its zero bytes is also taken as a list of
// arguments, which must come back from Join and Split unchanged.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiMem.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using Args = std::vector<std::string>;
using kiFuzz::Check;

Args Split(const char* text) {
  char** argv = nullptr;
  const unsigned int count = kiCommandLine_Split(text, &argv);
  Check(argv != nullptr && argv[count] == nullptr, "block not terminated");
  Check(kiCommandLine_Split(text, nullptr) == count, "count without a block");
  Args args(argv, argv + count);
  kiMem_Free(argv);
  return args;
}

std::string Join(const Args& args) {
  std::vector<const char*> pointers;
  for (const std::string& a : args) pointers.push_back(a.c_str());
  char* text = kiCommandLine_Join(pointers.data(), static_cast<unsigned int>(pointers.size()));
  Check(text != nullptr, "Join answered null");
  std::string joined = text;
  kiMem_Free(text);
  return joined;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  const std::string input(reinterpret_cast<const char*>(data), size);

  const Args first = Split(input.c_str());
  const std::string joined = Join(first);
  Check(Split(joined.c_str()) == first, "split, join, split changed the arguments");

  Args pieces;
  size_t at = 0;
  for (;;) {
    const size_t end = input.find('\0', at);
    pieces.push_back(input.substr(at, end == std::string::npos ? std::string::npos : end - at));
    if (end == std::string::npos) break;
    at = end + 1;
  }
  Check(Split(Join(pieces).c_str()) == pieces, "joined arguments did not split back");
  return 0;
}
