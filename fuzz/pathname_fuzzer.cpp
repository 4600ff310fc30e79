// pathname_fuzzer.cpp - kiPathName construction, the anchored constructor's
// simplification and the path parts, in both path dialects: the kind always
// follows the fields, simplified paths hold no "//", "/./" or "/../", anchored
// POSIX results stay under "/", and a built path splits back to itself.
#include <cstdint>
#include <cstring>
#include <string>

#include "ki/files/PathName.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiPath_p.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using kiFuzz::Check;

bool Has(const std::string& text, const char* piece) {
  return text.find(piece) != std::string::npos;
}

bool EndsWith(const std::string& text, const char* tail) {
  const size_t n = std::strlen(tail);
  return text.size() >= n && text.compare(text.size() - n, n, tail) == 0;
}

void CheckKind(const kiPathName& p) {
  const std::string path = p.GetPath().c_str();
  const std::string name = p.GetFileName().c_str();
  const std::string extension = p.GetExtension().c_str();
  const std::string full = p.GetFullPath().c_str();
  switch (p.GetKind()) {
    case kiPathKind_Invalid:
      Check(path.empty() && name.empty() && extension.empty() && full.empty(), "kind 0 not empty");
      break;
    case kiPathKind_Dir:
      Check(!path.empty() && name.empty() && extension.empty(), "kind 2 fields");
      break;
    case kiPathKind_File:
      Check(!path.empty() && (!name.empty() || !extension.empty()), "kind 1 fields");
      break;
    default:
      kiFuzz::Fail("kind out of range");
  }
  Check(full == path + p.GetFullName().c_str(), "full path is not path + full name");
  Check(std::strcmp(p.c_str(), full.c_str()) == 0, "c_str differs from the full path");
  unsigned int slashes = 0;
  for (char c : path) slashes += c == '/' ? 1 : 0;
  Check(p.GetPathCount() == slashes, "path count");
  for (unsigned int i = 0; i <= slashes + 1; ++i) {
    Check(p.GetPathPart(i).Find('/') == kiNPos, "a path part holds '/'");
  }
  Check(p.GetVolume().IsEmpty() == !p.IsValid(), "volume of a valid path");
  // Walking up ends: each directory step drops at least one '/'.
  kiPathName up = p;
  for (unsigned int steps = 0; up.IsValid(); ++steps) {
    Check(steps <= slashes + 1, "parent walk does not end");
    up = up.GetParentPath();
  }
}

void CheckSimplified(const std::string& text, bool rooted) {
  Check(!Has(text, "//") && !Has(text, "/./") && !Has(text, "/../"), "not simplified");
  Check(!EndsWith(text, "/.") && !EndsWith(text, "/.."), "ends in a dot segment");
  Check(!rooted || text[0] == '/', "left the root");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  kiFuzz::Reader in(data, size);
  const uint8_t control = in.Byte();
  const bool windows = (control & 1) != 0;
  const int kind = (control >> 1) % 4;  // 3 is no kind
  const int flags = (control >> 3) & 3;
  const bool strip = (control & 0x20) != 0;
  const std::string first = in.Until(0);
  const std::string second = in.Until(0);

  kiPath_SetFolderRootForTesting(windows ? "C:\\fz" : "/fz");
  kiPath_SetDialectForTesting(windows ? kiPathDialect_Windows : kiPathDialect_Posix,
                              windows ? "C:/app/" : "/app/dir/");
  const bool tokens = Has(first, "<") || Has(second, "<");

  char* built = kiPath_MakeAbsolute(first.c_str(), strip, flags, nullptr);
  if (!windows && built != nullptr && !first.empty() && flags == 0) {
    Check(built[0] == '/', "a POSIX path was left relative");
  }
  kiMem_Free(built);

  char* simple = kiPath_Simplify(first.c_str());
  if (simple != nullptr) {
    CheckSimplified(simple, !first.empty() && first[0] == '/');
    char* again = kiPath_Simplify(simple);
    Check(again != nullptr && std::strcmp(again, simple) == 0, "simplifying twice changed it");
    kiMem_Free(again);
  }
  kiMem_Free(simple);

  const kiPathName plain(kind, first.c_str());
  CheckKind(plain);
  Check(!plain.IsValid() || plain.GetKind() == kind, "split as another kind");
  if (!windows && !tokens && plain.IsValid()) {
    Check(plain.GetPath().First() == '/', "a POSIX path is not absolute");
    Check(kiPathName(kind, plain.c_str()).GetFullPath() == plain.GetFullPath(),
          "a built path did not split back to itself");
  }

  const kiPathName anchor(kiPathKind_Dir, first.c_str());
  const kiPathName anchored(anchor, second.c_str(), kind);
  CheckKind(anchored);
  if (anchored.IsValid()) {
    const std::string path = anchored.GetPath().c_str();
    CheckSimplified(path, !windows);
    Check(anchored.GetFullName() != "." && anchored.GetFullName() != "..", "dot file name");
  }

  kiPathName edited = anchored.IsValid() ? anchored : plain;
  edited.SetFullName(second.c_str());
  CheckKind(edited);
  edited.AppendPathPart(second.c_str());
  CheckKind(edited);
  edited.SetPath(first.c_str());
  CheckKind(edited);
  kiPathName triple(first.c_str(), second.c_str(), first.c_str());
  CheckKind(triple);
  Check(!triple.IsValid() || triple.IsFilePath(), "three-part constructor made no file path");
  return 0;
}
