// StringPrintfUTF16.cpp - must not compile: "%ls" reads wchar_t, so a UTF-16
// text handed to kiString::Printf or kiString::Format would be read at the
// wrong width. Built once with KI_USE_FORMAT and once without.
#include "ki/core/String.h"

int main() {
  const kiString name(u"x");
#if defined(KI_USE_FORMAT)
  return kiString::Format(u"%ls", name.c_str()).IsEmpty() ? 1 : 0;
#else
  kiString s;
  return s.Printf(u"%d %ls", 1, name.c_str());
#endif
}
