// TextFileTest.cpp - kiTextFile: line ends across buffer fills, overlong lines,
// rewinding, and files that cannot be read.
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/files/TextFile.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

using Lines = std::vector<std::string>;

class TextFileTest : public ::testing::Test {
 protected:
  std::string Write(const std::string& bytes) {
    std::ofstream(dir_.Path("text"), std::ios::binary) << bytes;
    return dir_.Path("text");
  }

  static Lines ReadAll(kiTextFile& file, std::size_t limit = 100) {
    Lines lines;
    kiCString line;
    while (lines.size() < limit && file.NextLine(line))
      lines.emplace_back(line.c_str(), line.length());
    return lines;
  }

  kiTest::TempDir dir_;
};

// Every buffer size from first to last gives the same lines: lines end at
// LF, CR or CR LF wherever the fills fall, and overlong lines are cut.
TEST_F(TextFileTest, LinesSplitAndCutWhateverTheFills) {
  struct Row {
    std::string bytes;
    unsigned int first, last;
    Lines lines;
  };
  const Row rows[] = {
      {"a\r\nb\rc\nd", 1, 12, {"a", "b", "c", "d"}},
      {"\n\r\r\n\n", 1, 8, {"", "", "", ""}},  // CR LF counts once, even torn apart
      {"ab\r\ncd\r\n", 2, 12, {"ab", "cd"}},
      {std::string("a\0b\nc", 5), 3, 8, {std::string("a\0b", 3), "c"}},
      {"", 1, 2, {}},
      {"abc", 3, 5, {"abc"}},  // no final end
      {"abcdefg\nxy", 4, 4, {"abcd", "xy"}},
      {"abcd\r\nxy", 4, 4, {"abcd", "xy"}},     // exactly the buffer: nothing lost
      {"abcdefg\r\nxy", 4, 4, {"abcd", "xy"}},  // the skipped rest ends in a torn CR LF
      {"abc\r\nxy", 1, 1, {"a", "x"}},
  };
  for (const Row& r : rows) {
    const std::string path = Write(r.bytes);
    for (unsigned int size = r.first; size <= r.last; ++size) {
      SCOPED_TRACE(::testing::PrintToString(r.bytes) + " size " + std::to_string(size));
      kiTextFile file(path.c_str(), size);
      EXPECT_EQ(r.lines, ReadAll(file));
      kiCString line("kept");
      EXPECT_FALSE(file.NextLine(line));  // and it stays at the end
      EXPECT_EQ("kept", line);
    }
  }
}

TEST_F(TextFileTest, RewindStartsOverFromAnyState) {
  // Stopped after a CR at the end of a fill, and inside an overlong line.
  kiTextFile file(Write("ab\r\nlonger line\nz").c_str(), 3);
  kiCString line;
  ASSERT_TRUE(file.NextLine(line));
  EXPECT_EQ("ab", line);
  file.Rewind();
  EXPECT_EQ(Lines({"ab", "lon", "z"}), ReadAll(file));
  file.Rewind();
  ASSERT_TRUE(file.NextLine(line));
  ASSERT_TRUE(file.NextLine(line));
  EXPECT_EQ("lon", line);
  file.Rewind();
  EXPECT_EQ(Lines({"ab", "lon", "z"}), ReadAll(file));
}

TEST_F(TextFileTest, UnreadableFilesGiveNoLines) {
  kiTest::LogCapture log;
  kiTextFile missing(dir_.Path("missing").c_str());
  EXPECT_FALSE(missing.IsOpened());
  kiCString line;
  EXPECT_FALSE(missing.NextLine(line));
  missing.Rewind();
  EXPECT_EQ(2u, log.Count());  // the failed open, by both layers, and nothing after

  kiTextFile empty(Write("a\nb\n").c_str(), 0);
  EXPECT_TRUE(empty.IsOpened());
  EXPECT_FALSE(empty.NextLine(line));

  // A directory does not open as a file.
  EXPECT_FALSE(kiTextFile(dir_.Path().c_str()).IsOpened());
}

}  // namespace
