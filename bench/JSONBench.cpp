// JSONBench.cpp - kiJSONFormatter beside RapidJSON and nlohmann/json: writing
// a 1 MB document in compact mode, and parsing a 1 MB text into a sink that
// drops every event. Cases are BM_JSONWrite/<side>/<bytes> and
// BM_JSONParse/<side>/<bytes>, side being ki, rapidjson or nlohmann; a side
// whose library is missing is left out.
//
// The document is one in-memory tree built once (deterministic): an array of
// records, each a map of about eight members with short keys, whose values are
// nested maps (depth at most 6, well inside the parser's 20 levels), arrays of
// integers and doubles, arrays of strings, and strings of 5 to 40 bytes with
// an escape now and then. Integers stay in the 32-bit range (the ki parser
// reports them as S32); doubles are multiples of 1/4, so every writer gives a
// short exact text (ki writes six decimals, "12.250000", the peers "12.25").
//
// Write: each writer walks the same tree and emits the same events; a fresh
// writer per iteration, so buffer growth is timed on every side. ki is fed
// MapBegin/MapKey/ArrayBegin/ArrayItemSeparator/S32/Float/String(text, false);
// RapidJSON's Writer<StringBuffer> StartObject/Key/Int/Double/String. nlohmann
// has no event writer: its json value is built from the tree once, outside the
// timed loop, and only dump() is timed. Its objects keep their keys sorted, so
// its text holds the same members in another order. The texts differ in size
// (ki's six decimals and its comma before every '}'), so compare the
// bytes/s columns as well as the times.
//
// Parse: all sides read the same standard text, the one RapidJSON writes (ki's
// own text has a comma before every '}', which the peers reject); without
// RapidJSON, ki's text with those commas taken out. ki parses into
// kiEmptySerialize; RapidJSON's Reader into BaseReaderHandler (default flags,
// not in place); nlohmann's sax_parse into a SAX handler that accepts every
// event. Each side checks once, before timing, that it accepts the text.
#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "ki/serialize/JSONFormatter.h"
#include "ki/serialize/Serialize.h"

#if defined(KI_HAVE_RAPIDJSON)
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#if defined(KI_HAVE_NLOHMANN)
#include <nlohmann/json.hpp>
#endif

namespace {

constexpr int64_t kMB = 1 << 20;

// One value of the document tree.
struct Node {
  enum Kind { kMap, kArray, kInt, kDouble, kString } kind = kInt;
  int integer = 0;
  double number = 0;
  std::string text;            // a string value
  std::string key;             // the key of a map member
  std::vector<Node> children;  // map members or array items
};

// The size of node's standard compact text (the peers' text: doubles in the
// shortest form, at least one decimal).
int64_t TextSize(const Node& node) {
  int64_t size = 2;
  switch (node.kind) {
    case Node::kMap:
      for (const Node& member : node.children) {
        size += static_cast<int64_t>(member.key.size()) + 4 + TextSize(member);
      }
      return size - (node.children.empty() ? 0 : 1);
    case Node::kArray:
      for (const Node& item : node.children) size += TextSize(item) + 1;
      return size - (node.children.empty() ? 0 : 1);
    case Node::kInt:
      return static_cast<int64_t>(std::to_string(node.integer).size());
    case Node::kDouble: {
      char out[64];
      const std::string text(out, std::to_chars(out, out + sizeof(out), node.number).ptr);
      return static_cast<int64_t>(text.size()) + (text.find('.') == std::string::npos ? 2 : 0);
    }
    case Node::kString:
      for (const char c : node.text) size += c == '"' || c == '\\' || c < ' ' ? 2 : 1;
      return size;
  }
  return size;
}

class Generator {
 public:
  // Records of nested values until their standard compact text has n bytes.
  Node Document(int64_t n) {
    Node root;
    root.kind = Node::kArray;
    for (int64_t bytes = 2; bytes < n;) {
      root.children.push_back(Map(1));
      bytes += TextSize(root.children.back()) + 1;
    }
    return root;
  }

 private:
  uint32_t Next(uint32_t range) {
    m_state = m_state * 1664525u + 1013904223u;
    return (m_state >> 8) % range;
  }

  // Letters with, one string in eight, an escaped byte inside.
  std::string Text(uint32_t minLength, uint32_t maxLength) {
    static const char kEscaped[] = {'"', '\\', '\n', '\t'};
    std::string s(minLength + Next(maxLength - minLength + 1), ' ');
    for (char& c : s) c = static_cast<char>(Next(4) == 0 ? ' ' : 'a' + Next(26));
    if (Next(8) == 0) s[Next(static_cast<uint32_t>(s.size()))] = kEscaped[Next(4)];
    return s;
  }

  Node Scalar() {
    Node node;
    switch (Next(3)) {
      case 0:
        node.kind = Node::kInt;
        node.integer = static_cast<int>(Next(2000000001)) - 1000000000;
        break;
      case 1:
        node.kind = Node::kDouble;
        node.number = (static_cast<double>(Next(4000001)) - 2000000.0) / 4;
        break;
      default:
        node.kind = Node::kString;
        node.text = Text(5, 40);
    }
    return node;
  }

  Node Array() {
    Node node;
    node.kind = Node::kArray;
    const bool strings = Next(3) == 0;
    const uint32_t count = 4 + Next(13);
    for (uint32_t i = 0; i < count; ++i) {
      Node item;
      if (strings) {
        item.kind = Node::kString;
        item.text = Text(5, 40);
      } else if (Next(2) == 0) {
        item.kind = Node::kInt;
        item.integer = static_cast<int>(Next(200001)) - 100000;
      } else {
        item.kind = Node::kDouble;
        item.number = static_cast<double>(Next(400001)) / 4;
      }
      node.children.push_back(std::move(item));
    }
    return node;
  }

  // A map at depth (1 for a record): six to ten members with distinct keys.
  Node Map(int depth) {
    static const char* const kKeys[] = {"id",   "name", "type", "size", "rate", "tags",
                                        "info", "meta", "x",    "y",    "w",    "h",
                                        "item", "list", "note", "flag"};
    Node node;
    node.kind = Node::kMap;
    const uint32_t count = 6 + Next(5);
    const uint32_t first = Next(16);
    for (uint32_t i = 0; i < count; ++i) {
      const uint32_t pick = Next(10);
      Node member = pick < 2 && depth < 6 ? Map(depth + 1) : pick < 4 ? Array() : Scalar();
      member.key = kKeys[(first + i) % 16];
      node.children.push_back(std::move(member));
    }
    return node;
  }

  uint32_t m_state = 2024;
};

const Node& Document() {
  static const Node* document = new Node(Generator().Document(kMB));
  return *document;
}

// ---- ki ---------------------------------------------------------------------

void WriteKi(const Node& node, kiISerialize& out) {
  switch (node.kind) {
    case Node::kMap:
      out.MapBegin();
      for (const Node& member : node.children) {
        out.MapKey(member.key.c_str(), false);
        WriteKi(member, out);
      }
      out.MapEnd();
      break;
    case Node::kArray:
      out.ArrayBegin();
      for (size_t i = 0; i < node.children.size(); ++i) {
        if (i != 0) out.ArrayItemSeparator();
        WriteKi(node.children[i], out);
      }
      out.ArrayEnd();
      break;
    case Node::kInt:
      out.S32(node.integer);
      break;
    case Node::kDouble:
      out.Float(node.number);
      break;
    case Node::kString:
      out.String(node.text.c_str(), false);
      break;
  }
}

std::string KiText() {
  kiJSONFormatter formatter;
  WriteKi(Document(), formatter);
  const kiCString text = formatter.Result();
  return std::string(text.c_str(), text.length());
}

#if !defined(KI_HAVE_RAPIDJSON)
// ki's text without the comma it writes before every '}': standard JSON.
std::string WithoutClosingCommas(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  bool inString = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString && c == '\\' && i + 1 < text.size()) {
      out += c;
      out += text[++i];
      continue;
    }
    if (c == '"') inString = !inString;
    if (!inString && c == ',' && i + 1 < text.size() && text[i + 1] == '}') continue;
    out += c;
  }
  return out;
}
#endif

#if defined(KI_HAVE_RAPIDJSON)
template <typename Writer>
void WriteRapid(const Node& node, Writer& out) {
  switch (node.kind) {
    case Node::kMap:
      out.StartObject();
      for (const Node& member : node.children) {
        out.Key(member.key.data(), static_cast<rapidjson::SizeType>(member.key.size()));
        WriteRapid(member, out);
      }
      out.EndObject();
      break;
    case Node::kArray:
      out.StartArray();
      for (const Node& item : node.children) WriteRapid(item, out);
      out.EndArray();
      break;
    case Node::kInt:
      out.Int(node.integer);
      break;
    case Node::kDouble:
      out.Double(node.number);
      break;
    case Node::kString:
      out.String(node.text.data(), static_cast<rapidjson::SizeType>(node.text.size()));
      break;
  }
}
#endif

// The standard text every parser reads.
const std::string& ParseText() {
  static const std::string* text = [] {
#if defined(KI_HAVE_RAPIDJSON)
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    WriteRapid(Document(), writer);
    return new std::string(buffer.GetString(), buffer.GetSize());
#else
    return new std::string(WithoutClosingCommas(KiText()));
#endif
  }();
  return *text;
}

void WriteBenchKi(benchmark::State& state) {
  const Node& document = Document();
  size_t bytes = 0;
  {
    kiEmptySerialize sink;
    const std::string text = KiText();
    if (kiJSONFormatter::Parse(text.c_str(), sink) != 0) {
      state.SkipWithError("ki cannot read its own text");
      return;
    }
  }
  for (auto _ : state) {
    kiJSONFormatter formatter;
    WriteKi(document, formatter);
    const kiCString text = formatter.Result();
    bytes = text.length();
    benchmark::DoNotOptimize(text.c_str());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.counters["text_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(WriteBenchKi)->Name("BM_JSONWrite/ki")->Arg(kMB);

void ParseBenchKi(benchmark::State& state) {
  const std::string& text = ParseText();
  kiEmptySerialize sink;
  if (kiJSONFormatter::Parse(text.c_str(), sink) != 0) {
    state.SkipWithError("ki rejects the standard text");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(kiJSONFormatter::Parse(text.c_str(), sink));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.counters["text_bytes"] = static_cast<double>(text.size());
}
BENCHMARK(ParseBenchKi)->Name("BM_JSONParse/ki")->Arg(kMB);

// ---- RapidJSON --------------------------------------------------------------

#if defined(KI_HAVE_RAPIDJSON)
void WriteBenchRapid(benchmark::State& state) {
  const Node& document = Document();
  size_t bytes = 0;
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    WriteRapid(document, writer);
    bytes = buffer.GetSize();
    benchmark::DoNotOptimize(buffer.GetString());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.counters["text_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(WriteBenchRapid)->Name("BM_JSONWrite/rapidjson")->Arg(kMB);

void ParseBenchRapid(benchmark::State& state) {
  const std::string& text = ParseText();
  rapidjson::BaseReaderHandler<> handler;
  {
    rapidjson::Reader reader;
    rapidjson::StringStream stream(text.c_str());
    if (!reader.Parse(stream, handler)) {
      state.SkipWithError("RapidJSON rejects the text");
      return;
    }
  }
  for (auto _ : state) {
    rapidjson::Reader reader;
    rapidjson::StringStream stream(text.c_str());
    benchmark::DoNotOptimize(reader.Parse(stream, handler));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.counters["text_bytes"] = static_cast<double>(text.size());
}
BENCHMARK(ParseBenchRapid)->Name("BM_JSONParse/rapidjson")->Arg(kMB);
#endif

// ---- nlohmann/json ----------------------------------------------------------

#if defined(KI_HAVE_NLOHMANN)
nlohmann::json ToNlohmann(const Node& node) {
  switch (node.kind) {
    case Node::kMap: {
      nlohmann::json map = nlohmann::json::object();
      for (const Node& member : node.children) map[member.key] = ToNlohmann(member);
      return map;
    }
    case Node::kArray: {
      nlohmann::json array = nlohmann::json::array();
      for (const Node& item : node.children) array.push_back(ToNlohmann(item));
      return array;
    }
    case Node::kInt:
      return node.integer;
    case Node::kDouble:
      return node.number;
    case Node::kString:
      break;
  }
  return node.text;
}

// Accepts every event, like BaseReaderHandler and kiEmptySerialize.
struct NullSax : nlohmann::json_sax<nlohmann::json> {
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return false;
  }
};

// Only dump() is timed: the json value is built once, before the loop.
void WriteBenchNlohmann(benchmark::State& state) {
  const nlohmann::json value = ToNlohmann(Document());
  size_t bytes = 0;
  for (auto _ : state) {
    const std::string text = value.dump();
    bytes = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.counters["text_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(WriteBenchNlohmann)->Name("BM_JSONWrite/nlohmann")->Arg(kMB);

void ParseBenchNlohmann(benchmark::State& state) {
  const std::string& text = ParseText();
  NullSax sax;
  if (!nlohmann::json::sax_parse(text, &sax)) {
    state.SkipWithError("nlohmann/json rejects the text");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(nlohmann::json::sax_parse(text, &sax));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.counters["text_bytes"] = static_cast<double>(text.size());
}
BENCHMARK(ParseBenchNlohmann)->Name("BM_JSONParse/nlohmann")->Arg(kMB);
#endif

}  // namespace
