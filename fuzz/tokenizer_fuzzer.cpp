// tokenizer_fuzzer.cpp - both tokenizers and kiStringList beside std::string
// models. The tokenizer model splits the whole text into fields at once and
// derives each mode's tokens from them; it is checked token by token, after a
// CountTokens restart part way, and on the wide tokenizer. The list is split,
// joined, edited and copied beside a std::vector of items.
//
// Input: mode, separator, escape, delimiter count (low 2 bits), the
// delimiters, then the text up to a 0xFE byte; what follows drives the list
// operations. Reads past the end give zeros.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "ki/core/StringList.h"
#include "ki/core/StringTokenizer.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;
constexpr int kMaxOps = 64;

using Items = std::vector<std::string>;

using kiFuzz::Check;
using kiFuzz::Reader;

// ---- Tokenizer model ---------------------------------------------------------

bool IsSpace(char c) { return c == ' ' || (c >= 9 && c <= 13); }

kiCStringTokenizerMode Resolved(const std::string& delims, int mode) {
  if (mode != kiTOKEN_DEFAULT) return static_cast<kiCStringTokenizerMode>(mode);
  return std::all_of(delims.begin(), delims.end(), IsSpace) ? kiTOKEN_STRTOK : kiTOKEN_RET_EMPTY;
}

struct Expected {
  std::vector<std::string> tokens;
  unsigned int position = 0;  // after the last token
};

Expected Model(const std::string& text, const std::string& delims, kiCStringTokenizerMode mode) {
  struct Field {
    std::string text;
    size_t end;      // offset just past the field
    bool delimited;  // a delimiter follows it
  };
  std::vector<Field> fields;
  std::string field;
  for (size_t i = 0; i < text.size(); ++i) {
    if (delims.find(text[i]) != std::string::npos) {
      fields.push_back({field, i, true});
      field.clear();
    } else {
      field += text[i];
    }
  }
  fields.push_back({field, text.size(), false});

  Expected e;
  if (text.empty()) return e;
  if (mode == kiTOKEN_RET_EMPTY_ALL) {
    for (const Field& f : fields) e.tokens.push_back(f.text);
    e.position = static_cast<unsigned int>(text.size());
    return e;
  }
  size_t last = fields.size();  // the last field with a character in it
  for (size_t i = 0; i < fields.size(); ++i) {
    if (!fields[i].text.empty()) last = i;
  }
  if (last == fields.size()) {  // delimiters only: a lone empty token, RET_EMPTY only
    if (mode == kiTOKEN_RET_EMPTY) {
      e.tokens.push_back("");
      e.position = 1;
    }
    return e;
  }
  for (size_t i = 0; i <= last; ++i) {
    const Field& f = fields[i];
    if (mode == kiTOKEN_STRTOK && f.text.empty()) continue;
    e.tokens.push_back(f.text);
    if (mode == kiTOKEN_RET_DELIMS && f.delimited) e.tokens.back() += text[f.end];
  }
  e.position = static_cast<unsigned int>(fields[last].end + (fields[last].delimited ? 1 : 0));
  return e;
}

std::string Std(const kiCString& s) { return std::string(s.c_str(), s.length()); }

std::u16string Wide(const std::string& s) {
  std::u16string w;
  for (char c : s) w += static_cast<char16_t>(static_cast<unsigned char>(c));
  return w;
}

kiString WideString(const std::string& s) {
  const std::u16string w = Wide(s);
  return kiString(w.data(), static_cast<unsigned int>(w.size()));
}

bool Same(const kiString& s, const std::string& narrow) {
  return std::u16string(s.c_str(), s.length()) == Wide(narrow);
}

// Tokens through HasMoreTokens/GetNextToken, compared with the model.
void Drain(kiCStringTokenizer& t, const Expected& e, size_t from) {
  for (size_t i = from; i < e.tokens.size(); ++i) {
    Check(t.HasMoreTokens(), "a token is missing");
    Check(Std(t.GetNextToken()) == e.tokens[i], "wrong token");
  }
  Check(!t.HasMoreTokens(), "a token too many");
  Check(t.GetNextToken().IsEmpty(), "a token after the end");
}

void FuzzTokenizer(const std::string& text, const std::string& delims, int mode, size_t cut) {
  const kiCString ktext(text.data(), static_cast<unsigned int>(text.size()));
  const kiCString kdelims(delims.data(), static_cast<unsigned int>(delims.size()));
  const auto kmode = static_cast<kiCStringTokenizerMode>(mode);
  const kiCStringTokenizerMode resolved = Resolved(delims, mode);
  const Expected e = Model(text, delims, resolved);

  kiCStringTokenizer t(ktext, kdelims, kmode);
  Check(t.GetMode() == resolved && t.IsOk() == (resolved != kiTOKEN_INVALID), "mode");
  Check(t.CountTokens() == e.tokens.size(), "CountTokens at the start");
  Drain(t, e, 0);
  Check(t.GetPosition() == e.position, "final position");
  Check(Std(t.GetString()) == text.substr(e.position), "remaining text");

  // Part way: CountTokens counts what is left, then restarts on the rest.
  t.Reinit(ktext);
  cut = std::min(cut, e.tokens.size());
  for (size_t i = 0; i < cut; ++i) t.GetNextToken();
  const std::string rest = Std(t.GetString());
  kiCStringTokenizer copy(t);
  Check(t.CountTokens() == e.tokens.size() - cut, "CountTokens part way");
  Check(t.GetPosition() == 0 && Std(t.GetString()) == rest, "CountTokens restart");
  Drain(t, Model(rest, delims, resolved), 0);
  Drain(copy, e, cut);  // the copy went on where it was

  kiStringTokenizer w(WideString(text), WideString(delims), kmode);
  Check(w.GetMode() == resolved, "wide mode");
  for (const std::string& token : e.tokens) {
    Check(w.HasMoreTokens() && Same(w.GetNextToken(), token), "wide token");
  }
  Check(!w.HasMoreTokens() && w.GetPosition() == e.position, "wide end");
}

// ---- String list model ---------------------------------------------------------

Items Split(const std::string& text, char sep, char esc) {
  Items items;
  const std::string c = text.substr(0, text.find('\0'));  // Set reads a C string
  if (c.empty()) return items;
  if (esc == sep) esc = 0;
  std::string item;
  for (size_t i = 0; i < c.size(); ++i) {
    if (sep == 0 || c[i] != sep) {
      item += c[i];
    } else if (esc != 0 && i > 0 && c[i - 1] == esc) {
      item.back() = sep;
    } else {
      items.push_back(item);
      item.clear();
    }
  }
  items.push_back(item);
  return items;
}

std::string Join(const Items& items, char sep, char esc) {
  std::string s;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i > 0) s += sep;
    for (char c : items[i]) {
      if (esc != 0 && sep != 0 && c == sep) s += esc;
      s += c;
    }
  }
  return s;
}

void SameList(const kiStringList& list, const Items& model) {
  Check(list.GetCount() == model.size(), "count");
  for (unsigned int i = 0; i < list.GetCount(); ++i) {
    Check(model[i] == list.GetAt(i), "item");
  }
  Check(list.GetAt(list.GetCount()) == nullptr, "past the end");
}

void FuzzList(Reader& in, const std::string& text, char sep, char esc) {
  kiStringList list(text.c_str(), sep, esc);
  Items model = Split(text, sep, esc);
  SameList(list, model);
  // A piece of the text (up to its first zero) as an argument.
  auto piece = [&in, &text]() {
    const size_t at = in.Byte() % (text.size() + 1);
    const std::string s = text.substr(at, in.Byte() % 8);
    return s.substr(0, s.find('\0'));
  };
  auto index = [&in, &model]() {
    return model.empty() ? 0u : static_cast<unsigned int>(in.Byte() % model.size());
  };

  for (int op = 0; op < kMaxOps && !in.AtEnd(); ++op) {
    switch (in.Byte() % 8) {
      case 0: {
        const std::string s = piece();
        list.Add(s.c_str());
        model.push_back(s);
        break;
      }
      case 1:  // an item of the list itself, or null
        if (model.empty()) {
          list.Add(nullptr);
          model.emplace_back();
        } else {
          const unsigned int i = index();
          list.Add(list.GetAt(i));
          model.push_back(model[i]);
        }
        break;
      case 2: {
        const std::string s = (in.Byte() & 1) != 0 && !model.empty() ? model[index()] : piece();
        const auto found = std::find(model.begin(), model.end(), s);
        Check(list.Remove(s.c_str()) == (found != model.end()), "Remove");
        if (found != model.end()) model.erase(found);
        break;
      }
      case 3: {  // the single pass, written as the loop it stands for
        size_t removed = 0;
        for (size_t i = 0; i < model.size(); ++i) {
          if (model[i].empty()) {
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(i));
            ++removed;
          }
        }
        Check(list.RemoveEmpty() == removed, "RemoveEmpty count");
        break;
      }
      case 4: {
        const std::string s = piece();
        const auto found = std::find(model.begin(), model.end(), s);
        const int expected = found == model.end() ? -1 : static_cast<int>(found - model.begin());
        Check(list.IndexOf(s.c_str()) == expected && list.Has(s.c_str()) == (expected != -1),
              "IndexOf");
        break;
      }
      case 5: {
        kiStringList copy(list);
        kiCSVStringList other;
        static_cast<kiStringList&>(other) = list;
        list.Add("tail");
        SameList(copy, model);
        SameList(other, model);
        model.emplace_back("tail");
        list.AssignCopy(copy);
        model.pop_back();
        break;
      }
      case 6: {  // join, then split again
        const char e = (in.Byte() & 1) != 0 ? esc : '\0';
        const std::string joined = Join(model, sep, e);
        Check(Std(list.GetString(e)) == joined, "GetString");
        const Items back = Split(joined, sep, e);
        const bool trip =
            e != 0 && e != sep && sep != 0 && !(model.size() == 1 && model[0].empty()) &&
            std::none_of(model.begin(), model.end() - (model.empty() ? 0 : 1),
                         [e](const std::string& s) { return !s.empty() && s.back() == e; });
        Check(!trip || back == model, "escaped round trip");
        list.Set(list.GetString(e), sep, e);
        model = back;
        break;
      }
      default: {
        const unsigned int i = in.Byte() % (model.size() + 2);
        const int a = list.GetAtInt32(i, 7), b = list.GetAtInt32(i, 8);
        Check(i < model.size() || (a == 7 && b == 8), "GetAtInt32 out of range");
        Check(a == b || (a == 7 && b == 8), "GetAtInt32 ignores its default on success");
        break;
      }
    }
    SameList(list, model);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Reader in(data, size);
  const int mode = in.Byte() % 6 - 1;  // kiTOKEN_INVALID .. kiTOKEN_STRTOK
  const char sep = static_cast<char>(in.Byte());
  const char esc = static_cast<char>(in.Byte());
  const uint8_t head = in.Byte();
  std::string delims;
  for (int i = 0; i < (head & 3); ++i) delims += static_cast<char>(in.Byte());
  const std::string text = in.Until(0xFE);
  FuzzTokenizer(text, delims, mode, head >> 2);
  FuzzList(in, text, sep, esc);
  return 0;
}
