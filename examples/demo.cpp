// demo.cpp - a tour of what ki offers so far: strings, numbers, logging and
// the fatal-error callback.
#include <clocale>
#include <cstdio>
#include <ki/ki.h>

KI_LOG_SOURCE("examples/demo")

namespace {

void OnFatal(const char* tag) {
  std::printf("demo: the fatal-error callback saw '%s'\n", tag);
  std::fflush(stdout);
}

}  // namespace

int main() {
  // The wide string's case mapping follows the C library's locale.
  std::setlocale(LC_CTYPE, "C.UTF-8");

  // Copies share one block until one of them changes.
  kiCString greeting("Hello, media world");
  kiCString copy(greeting);
  std::printf("shared block: %s\n", copy.c_str() == greeting.c_str() ? "yes" : "no");
  copy.Replace("world", "server", true);
  std::printf("%s / %s\n", greeting.c_str(), copy.c_str());

  // Splitting and searching.
  kiCString path("/media/music/album/track01.flac");
  std::printf("dir=%s name=%s ext=%s\n", path.BeforeLast('/').c_str(),
              path.AfterLast('/').BeforeFirst('.').c_str(), path.AfterLast('.').c_str());

  // Numbers read the same way in every locale.
  long port = 0;
  double ratio = 0;
  kiCString("  8200").ToLong(&port);
  kiCString("1.5e3").ToDouble(&ratio);
  std::printf("port=%ld ratio=%g hex=%s\n", port, ratio,
              kiCString::Format("%#x", static_cast<unsigned>(port)).c_str());

  // UTF-8 in, UTF-16 inside, UTF-8 out; invalid input is refused whole.
  kiWCharBuffer wide = kiConvUTF8.ToString("Gr\xc3\xbc\xc3\x9f dich, \xe4\xb8\x96\xe7\x95\x8c");
  kiString title(wide);
  std::printf("%u UTF-16 units, upper: %s, overlong input refused: %s\n", title.length(),
              kiConvUTF8.ToUTF8(title.Upper().c_str()).data(),
              kiConvUTF8.ToString("\xc0\x80").data() == nullptr ? "yes" : "no");

  // Tokens and lists.
  kiCStringTokenizer tokens("a,,b", ",");
  std::printf("tokens:");
  while (tokens.HasMoreTokens()) std::printf(" [%s]", tokens.GetNextToken().c_str());
  kiCSVStringList list("mp3,flac\\,lossless,ogg", '\\');
  std::printf("\nlist of %u, second item '%s'\n", list.GetCount(), list.GetAt(1));

  // A record in the library's shape, to standard error.
  KI_LOG(kiLogLevel_Error, kiLogCat_General, "demo: a sample error record (%s)\n", "level 1");

  // The process-wide fatal callback; the demo shows it without dying.
  kiFatalError_SetCallback(OnFatal);
  std::printf("callback registered; a fatal error would now call it and exit with 255\n");
  return 0;
}
