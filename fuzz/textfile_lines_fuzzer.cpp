// textfile_lines_fuzzer.cpp - kiTextFile against a model of its rules: lines
// end at CR LF, CR or LF; a line longer than the buffer comes back cut to the
// buffer's size; nothing else depends on where the buffer fills fall. The
// input goes to a temporary file, read with a buffer of 1..64 bytes up to a
// chosen line, then whole after Rewind, and once more after a second Rewind.
//
// Input: the buffer size byte, the number of lines read before the first
// Rewind, then the file's bytes.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "ki/files/TextFile.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using Lines = std::vector<std::string>;
using kiFuzz::Check;

Lines Model(const std::string& text, size_t capacity) {
  Lines lines;
  std::string line;
  bool open = false;  // bytes seen since the last line end
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r' || c == '\n') {
      lines.push_back(line.substr(0, capacity));
      line.clear();
      open = false;
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      line += c;
      open = true;
    }
  }
  if (open) lines.push_back(line.substr(0, capacity));
  return lines;
}

// The next line, or false at the end; the line is left alone at the end.
bool Next(kiTextFile& file, std::string* out) {
  kiCString line("unchanged");
  if (!file.NextLine(line)) {
    Check(line == "unchanged", "line changed at the end");
    return false;
  }
  out->assign(line.c_str(), line.length());
  return true;
}

void ReadAndCompare(kiTextFile& file, const Lines& expected, size_t count) {
  std::string line;
  for (size_t i = 0; i < count; ++i) {
    Check(Next(file, &line), "too few lines");
    Check(line == expected[i], "line differs from the model");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  kiFuzz::Reader in(data, size);
  const unsigned int capacity = 1 + in.Byte() % 64;
  const size_t before = in.Byte();
  const kiFuzz::Reader::Bytes bytes = in.Take(in.Left());
  const std::string text(reinterpret_cast<const char*>(bytes.data), bytes.size);

  std::FILE* out = std::fopen(kiFuzz::TempPath().c_str(), "wb");
  Check(out != nullptr, "cannot write the temporary file");
  Check(std::fwrite(text.data(), 1, text.size(), out) == text.size(), "short write");
  std::fclose(out);

  const Lines expected = Model(text, capacity);
  kiTextFile file(kiFuzz::TempPath().c_str(), capacity);
  Check(file.IsOpened(), "not opened");
  ReadAndCompare(file, expected, before < expected.size() ? before : expected.size());
  for (int pass = 0; pass < 2; ++pass) {
    file.Rewind();
    ReadAndCompare(file, expected, expected.size());
    std::string extra;
    Check(!Next(file, &extra), "a line past the model's last");
    Check(!Next(file, &extra), "a line after the end");
  }
  return 0;
}
