// FileHelperTest.cpp - kiFileHelper::LoadInBuffer: the zero byte, the size
// limits, and errors that leave the buffer alone.
#include <fstream>
#include <string>
#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/files/FileHelper.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

class FileHelperTest : public ::testing::Test {
 protected:
  kiPathName Write(const std::string& bytes) {
    std::ofstream(dir_.Path("f"), std::ios::binary) << bytes;
    return kiPathName::MakeFilePath(dir_.Path("f").c_str());
  }

  kiTest::TempDir dir_;
  kiTest::LogCapture log_;
};

TEST_F(FileHelperTest, LoadsTheWholeFileWithOrWithoutAZero) {
  kiDataBuffer buffer;
  const kiPathName path = Write(std::string("a\0c", 3));
  ASSERT_EQ(0, kiFileHelper::LoadInBuffer(path, buffer, kiFileHelper::AddZero, 3).GetErrorCode());
  ASSERT_EQ(4u, buffer.size());
  EXPECT_EQ(std::string("a\0c\0", 4), std::string(reinterpret_cast<char*>(buffer.data()), 4));
  ASSERT_EQ(0, kiFileHelper::LoadInBuffer(path, buffer, 0, 3).GetErrorCode());
  EXPECT_EQ(3u, buffer.size());

  ASSERT_EQ(0, kiFileHelper::LoadInBuffer(Write(""), buffer, 0, 0).GetErrorCode());
  EXPECT_EQ(0u, buffer.size());
  EXPECT_TRUE(log_.Texts().empty());
}

TEST_F(FileHelperTest, ErrorsLeaveTheBufferAlone) {
  kiDataBuffer buffer(reinterpret_cast<const unsigned char*>("old"), 3);
  const kiPathName path = Write("abc");
  kiError err = kiFileHelper::LoadInBuffer(path, buffer, kiFileHelper::AddZero, 2);
  EXPECT_EQ(-1, err.GetErrorCode());
  EXPECT_EQ("File '" + dir_.Path("f") + "' is too large to be loaded",
            std::string(err.GetErrorStr().c_str()));

  const kiPathName missing = kiPathName::MakeFilePath(dir_.Path("missing").c_str());
  err = kiFileHelper::LoadInBuffer(missing, buffer, 0, 100);
  EXPECT_EQ(-3, err.GetErrorCode());
  EXPECT_EQ("Unable to open file '" + dir_.Path("missing") + "'",
            std::string(err.GetErrorStr().c_str()));

  // A FIFO opens, but has no length: too large as well.
  ASSERT_EQ(0, mkfifo(dir_.Path("fifo").c_str(), 0600));
  const kiPathName fifo = kiPathName::MakeFilePath(dir_.Path("fifo").c_str());
  err = kiFileHelper::LoadInBuffer(fifo, buffer, 0, 100);
  EXPECT_EQ(-1, err.GetErrorCode());
  EXPECT_THAT(err.GetErrorStr().c_str(), ::testing::EndsWith("' is too large to be loaded"));

  ASSERT_EQ(3u, buffer.size());
  EXPECT_EQ("old", std::string(reinterpret_cast<char*>(buffer.data()), 3));
}

}  // namespace
