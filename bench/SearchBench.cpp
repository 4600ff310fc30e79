// SearchBench.cpp - search criteria evaluated over a million in-memory
// candidates, the parsed tree (BM_SearchEvaluate/ki) beside a hand-written
// predicate doing the same comparisons (BM_SearchEvaluate/handwritten), and
// the parse of the criterion itself (BM_SearchParse/ki).
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "ki/core/CString.h"
#include "ki/search/ExpressionParser.h"
#include "ki/search/SearchExpression.h"

namespace {

const char kCriterion[] =
    "upnp:class derivedfrom \"object.item.audioItem\" and (dc:title contains \"love\" or "
    "upnp:artist = \"Queen\") and upnp:originalTrackNumber > \"3\"";

// One candidate as an application would hold it in memory: texts for the
// string fields, and the track number as a kiCString so that MatchInt reads it
// without a copy (the candidates share one block per number).
struct Candidate {
  const char* upnpClass;
  const char* title;
  const char* artist;
  kiCString trackNumber;
};

// Deterministic pseudo-random candidates; the titles live in one arena.
struct Catalogue {
  std::vector<Candidate> items;
  std::string titles;
  std::vector<kiCString> numbers;  // "1".."20", shared by the candidates
};

uint32_t Next(uint32_t& x) {
  x = x * 1664525u + 1013904223u;
  return x >> 8;
}

const Catalogue& GetCatalogue(size_t n) {
  static Catalogue catalogue;
  if (catalogue.items.size() == n) return catalogue;
  static const char* const kClasses[] = {"object.item.audioItem.musicTrack",
                                         "object.item.audioItem.musicTrack",
                                         "object.item.audioItem.musicTrack",
                                         "object.item.audioItem.audioBroadcast",
                                         "object.item.audioItem",
                                         "object.item.videoItem",
                                         "object.item.videoItem.movie",
                                         "object.item.imageItem.photo",
                                         "object.container.album.musicAlbum",
                                         "object.container.person.musicArtist"};
  static const char* const kArtists[] = {
      "Queen",       "queen",       "QUEEN", "Queen Latifah",  "Queens of the Stone Age",
      "Miles Davis", "Nina Simone", "Björk", "The Beatles",    "Aretha Franklin",
      "Radiohead",   "Fela Kuti",   "Air",   "Massive Attack", "Portishead",
      "Daft Punk"};
  static const char* const kWords[] = {"night", "blue",  "river", "lovely", "summer", "heart",
                                       "train", "gold",  "rain",  "dance",  "Glove",  "city",
                                       "moon",  "fever", "road",  "home"};
  static const char* const kLove[] = {"love", "Love", "LOVE", "loVe"};
  const size_t classCount = sizeof(kClasses) / sizeof(kClasses[0]);
  const size_t artistCount = sizeof(kArtists) / sizeof(kArtists[0]);
  const size_t wordCount = sizeof(kWords) / sizeof(kWords[0]);

  catalogue = Catalogue();
  for (int i = 1; i <= 20; ++i) catalogue.numbers.emplace_back(std::to_string(i).c_str());
  std::vector<size_t> titleAt;
  titleAt.reserve(n);
  catalogue.titles.reserve(n * 24);
  uint32_t x = 12345;
  for (size_t i = 0; i < n; ++i) {
    titleAt.push_back(catalogue.titles.size());
    const uint32_t words = 1 + Next(x) % 4;
    const uint32_t lovePlace = Next(x) % 8;  // about one title in three says "love"
    for (uint32_t w = 0; w < words; ++w) {
      if (w != 0) catalogue.titles += ' ';
      catalogue.titles += w == lovePlace ? kLove[Next(x) % 4] : kWords[Next(x) % wordCount];
    }
    catalogue.titles += '\0';
  }
  catalogue.items.reserve(n);
  for (size_t i = 0; i < n; ++i) {
    Candidate c{kClasses[Next(x) % classCount], catalogue.titles.c_str() + titleAt[i],
                kArtists[Next(x) % artistCount], catalogue.numbers[Next(x) % 20]};
    catalogue.items.push_back(c);
  }
  return catalogue;
}

// ---- The tree ------------------------------------------------------------------
// The application's parser gives every property it knows a number, so that the
// evaluator switches on it instead of comparing names.

enum { kUnknown = 0, kClass = 1, kTitle, kArtist, kTrackNumber };

class CandidateParser : public kiExpressionParser {
 public:
  explicit CandidateParser(const kiCString& text) : kiExpressionParser(text) {}

 protected:
  int GetPropertyID(const kiCString& property) override {
    if (property == "upnp:class") return kClass;
    if (property == "dc:title") return kTitle;
    if (property == "upnp:artist") return kArtist;
    if (property == "upnp:originalTrackNumber") return kTrackNumber;
    return kUnknown;
  }
};

class CandidateEvaluator final : public kiSearchExpressionEvaluator {
 public:
  const Candidate* candidate = nullptr;

  bool Evaluate(kiRelExpression* e) override {
    switch (e->GetPropertyID()) {
      case kClass:
        return e->MatchString(candidate->upnpClass);
      case kTitle:
        return e->MatchString(candidate->title);
      case kArtist:
        return e->MatchString(candidate->artist);
      case kTrackNumber:
        // exists is answered on the text; a value that is not a number never matches
        if (e->GetOperatorID() == kiSearchOp_Exists) return e->MatchString(candidate->trackNumber);
        return e->MatchInt(candidate->trackNumber);
      default:
        return e->MatchString(nullptr);
    }
  }
};

size_t CountTree(CandidateParser& parser, const std::vector<Candidate>& items) {
  CandidateEvaluator evaluator;
  size_t matches = 0;
  for (const Candidate& c : items) {
    evaluator.candidate = &c;
    matches += parser.Evaluate(&evaluator) ? 1 : 0;
  }
  return matches;
}

// ---- The hand-written predicate ----------------------------------------------
// The same comparisons with the same rules: a case-sensitive prefix, ASCII
// case-insensitive contains and equality (null counts as empty), the track
// number read as a whole decimal integer.

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool StartsWith(const char* text, const char* prefix) {
  return std::strncmp(text ? text : "", prefix, std::strlen(prefix)) == 0;
}

bool EqualsNoCase(const char* a, const char* b) {
  if (a == nullptr) a = "";
  for (; *a != '\0' && *b != '\0'; ++a, ++b) {
    if (LowerAscii(*a) != LowerAscii(*b)) return false;
  }
  return *a == *b;
}

// lowerNeedle is already lower case.
bool ContainsNoCase(const char* text, const char* lowerNeedle) {
  if (text == nullptr) return false;
  for (; *text != '\0'; ++text) {
    size_t i = 0;
    while (lowerNeedle[i] != '\0' && LowerAscii(text[i]) == lowerNeedle[i]) ++i;
    if (lowerNeedle[i] == '\0') return true;
  }
  return false;
}

bool IntGreater(const kiCString& text, int bound) {
  int value = 0;
  const char* end = text.c_str() + text.length();
  const std::from_chars_result r = std::from_chars(text.c_str(), end, value);
  return r.ec == std::errc() && r.ptr == end && value > bound;
}

bool Handwritten(const Candidate& c) {
  return StartsWith(c.upnpClass, "object.item.audioItem") &&
         (ContainsNoCase(c.title, "love") || EqualsNoCase(c.artist, "Queen")) &&
         IntGreater(c.trackNumber, 3);
}

size_t CountHandwritten(const std::vector<Candidate>& items) {
  size_t matches = 0;
  for (const Candidate& c : items) matches += Handwritten(c) ? 1 : 0;
  return matches;
}

// ---- Cases ----------------------------------------------------------------------

void EvaluateKi(benchmark::State& state) {
  const Catalogue& catalogue = GetCatalogue(static_cast<size_t>(state.range(0)));
  CandidateParser parser{kiCString(kCriterion)};
  if (!parser.Parse()) {
    state.SkipWithError("the criterion does not parse");
    return;
  }
  const size_t expected = CountHandwritten(catalogue.items);
  if (CountTree(parser, catalogue.items) != expected) {
    state.SkipWithError("the tree and the predicate disagree");
    return;
  }
  for (auto _ : state) {
    size_t matches = CountTree(parser, catalogue.items);
    benchmark::DoNotOptimize(matches);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["matches"] = static_cast<double>(expected);
}

void EvaluateHandwritten(benchmark::State& state) {
  const Catalogue& catalogue = GetCatalogue(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    size_t matches = CountHandwritten(catalogue.items);
    benchmark::DoNotOptimize(matches);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(EvaluateKi)->Name("BM_SearchEvaluate/ki")->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(EvaluateHandwritten)
    ->Name("BM_SearchEvaluate/handwritten")
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

// Construction, parse and precedence, and destruction of the tree: one item
// is one criterion parsed.
void ParseKi(benchmark::State& state) {
  const kiCString text(kCriterion);
  for (auto _ : state) {
    CandidateParser parser(text);
    bool valid = parser.Parse();
    benchmark::DoNotOptimize(valid);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ParseKi)->Name("BM_SearchParse/ki")->Unit(benchmark::kMicrosecond);

}  // namespace
