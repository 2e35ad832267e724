#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <string>

#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/LfsFile.h"
#include "RecordingFileSystem.h"
#include "Support/LogCapture.h"
#include "Support/TempDir.h"

using namespace Tovra::Fundo;

namespace {

template <class File>
class AnyFile : public testing::Test {
protected:
    std::string write(const std::string& text) {
        const std::string path = m_dir.path("file");
        std::ofstream(path) << text;
        return path;
    }
    TempDir m_dir;
};
using FileClasses = testing::Types<CFile, CLfsFile>;
TYPED_TEST_SUITE(AnyFile, FileClasses, );

TYPED_TEST(AnyFile, AsksTheFileSystemForTheModeThatTheFlagsName) {
    RecordingFileSystem fs;
    hookFileSystem("rec:", &fs);
    std::string modes;
    for (const uint32_t flags : {0U, 0x3000U, 1U, 0x1001U, 0x2001U, 0x3001U, 2U, 0x2002U, 0x1002U, 0x3002U,
                                 0x0081U, 0x10000U, 0x10080U}) {
        TypeParam file;
        EXPECT_TRUE(file.open("rec:/x", flags));
        modes += fs.modes.back() + " ";
    }
    const bool large = std::is_same_v<TypeParam, CLfsFile>;
    EXPECT_EQ(modes,
              std::string("rb rb wb wb ab ab rb+ rb+ wb+ ab+ wbe ") + (large ? "rb rbe " : "rbd rbed "));
    Support::LogCapture log(2);
    for (const uint32_t flags : {3U, 15U, 0x83U, 0x10004U}) {
        TypeParam file;
        EXPECT_FALSE(file.open("rec:/x", flags));
        EXPECT_FALSE(file.isOpen());
    }
    EXPECT_EQ(fs.modes.size(), 13U);
    EXPECT_EQ(log.count("File::open(): dwFlags(3) is invalid\n"), 1U);
    EXPECT_EQ(log.lines().size(), 4U);
}

// Random operations against a plain stdio stream on a file of the same content.
TYPED_TEST(AnyFile, KeepsPositionLengthAndContentLikeAStdioStream) {
    using Count = std::conditional_t<std::is_same_v<TypeParam, CFile>, size_t, long long>;
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&](unsigned limit) { return static_cast<long>(random() % limit); };
    const std::string ours = this->write("start");
    const std::string theirs = this->m_dir.path("model");
    std::ofstream(theirs) << "start";

    TypeParam file;
    ASSERT_TRUE(file.open(ours.c_str(), TypeParam::modeReadWrite));
    FILE* model = std::fopen(theirs.c_str(), "rb+");
    long length = 5;
    for (int step = 0; step < 3000; ++step) {
        char mine[300] = {};
        char other[300] = {};
        const long count = below(300);
        switch (below(4)) {
            case 0: {
                std::memset(mine, static_cast<int>('a' + below(26)), sizeof mine);
                // A stream wants a seek between reading and writing; the class seeks only when it must.
                file.seek(1, TypeParam::end), std::fseek(model, 1, SEEK_END);
                const long place = below(static_cast<unsigned>(length) + 1);
                ASSERT_EQ(file.seek(place, TypeParam::begin), place);
                std::fseek(model, place, SEEK_SET);
                ASSERT_EQ(file.write(mine, static_cast<Count>(count)), count);
                std::fwrite(mine, 1, static_cast<size_t>(count), model);
                file.flush();
                std::fflush(model);
                break;
            }
            case 1: {
                const auto got = file.read(mine, static_cast<Count>(count));
                ASSERT_EQ(got, static_cast<long>(std::fread(other, 1, static_cast<size_t>(count), model)));
                ASSERT_EQ(std::string(mine, 300), std::string(other, 300));
                break;
            }
            case 2: {
                const long back = std::min<long>(std::ftell(model), below(100));
                std::fseek(model, -back, SEEK_CUR);
                ASSERT_EQ(file.seek(-back, TypeParam::current), std::ftell(model));
                break;
            }
            default:
                ASSERT_EQ(file.gets(mine, 200) != nullptr, std::fgets(other, 200, model) != nullptr);
                ASSERT_STREQ(mine, other);
        }
        length = std::max(length, std::ftell(model));
        ASSERT_EQ(file.getPosition(), std::ftell(model));
        ASSERT_EQ(file.getLength(), length);
    }
    std::fclose(model);
}

TYPED_TEST(AnyFile, DoesNothingWithoutAnOpenFile) {
    TypeParam file;
    char buffer[8];
    EXPECT_EQ(file.read(buffer, 8), -1);
    EXPECT_EQ(file.write(buffer, 8), -1);
    EXPECT_EQ(file.writev(nullptr, 0), -1);
    EXPECT_EQ(file.seek(1, TypeParam::begin), 0);
    EXPECT_EQ(file.gets(buffer, 8), nullptr);
    EXPECT_EQ(file.puts("x"), 0);
    EXPECT_EQ(file.getLength() + file.getPosition(), 0);
    EXPECT_FALSE(file.setvbuf(nullptr, TypeParam::ioUnbuffered, 0));
    EXPECT_FALSE(file.open(this->m_dir.path("none").c_str(), TypeParam::modeRead));
    EXPECT_FALSE(file.open(nullptr, TypeParam::modeRead));
    EXPECT_EQ(file.load(this->m_dir.path("none").c_str()), nullptr);
}

TYPED_TEST(AnyFile, LoadsOnceAndFreesOnClose) {
    const std::string path = this->write("whole");
    TypeParam file;
    const uint8_t* bytes = file.load(path.c_str());
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes), 5), "whole");
    EXPECT_EQ(file.load("another"), bytes);
    EXPECT_TRUE(file.isOpen());
    file.close();
    EXPECT_FALSE(file.isOpen());

    this->write("");
    EXPECT_EQ(file.load(path.c_str()), nullptr);
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(file.getLength(), 0);
}

TYPED_TEST(AnyFile, KeepsAKnownLengthAndTruncatesOnCreate) {
    const std::string path = this->write("12345");
    TypeParam file;
    ASSERT_TRUE(file.open(path.c_str(), TypeParam::modeRead));
    this->write("1234567890");
    EXPECT_EQ(file.getLength(), 5);
    ASSERT_TRUE(file.open(path.c_str(), TypeParam::modeReadWrite | TypeParam::modeCreate));
    EXPECT_EQ(file.getLength(), 0);
    EXPECT_EQ(file.puts("ab"), 1);
    EXPECT_EQ(file.getPosition(), 2);
    EXPECT_EQ(file.getLength(), 2);
    EXPECT_TRUE(file.setvbuf(nullptr, TypeParam::ioUnbuffered, 0));
}

TEST(File, SeeksOnlyWhenItMust) {
    RecordingFileSystem fs;
    hookFileSystem("rec:", &fs);
    CFile file;
    ASSERT_TRUE(file.open("rec:/x", 0x1002));
    file.seek(0, CFile::begin);
    file.seek(0, CFile::current);
    EXPECT_EQ(fs.seeks, 0);
    file.seek(0, CFile::end);
    EXPECT_EQ(fs.seeks, 1);
    fs.failSeeks = true;
    EXPECT_EQ(file.seek(3, CFile::begin), 0);
    EXPECT_EQ(file.getPosition(), 0);
    EXPECT_EQ(file.getLength(), 0);
    EXPECT_GT(fs.seeks, 2);
}

TEST(File, AVectorWriteThatFailsLowersThePositionOfCFileAlone) {
    TempDir dir;
    const std::string path = dir.path("file");
    CFile file;
    CLfsFile large;
    ASSERT_TRUE(file.open(path.c_str(), 0x1002));
    ASSERT_TRUE(large.open(path.c_str(), 2));
    char text[] = "abc";
    file.write(text, 3);
    large.write(text, 3);
    EXPECT_EQ(file.writev(nullptr, 0), -1);
    EXPECT_EQ(file.getPosition(), 2);
    EXPECT_EQ(large.writev(nullptr, 0), -1);
    EXPECT_EQ(large.getPosition(), 3);
}

TEST(LfsFile, HoldsMoreThanFourGigabytes) {
    TempDir dir;
    CLfsFile file;
    ASSERT_TRUE(file.open(dir.path("sparse").c_str(), 0x1002));
    const long long far = 5LL << 30;
    EXPECT_EQ(file.seek(far, CLfsFile::begin), far);
    char byte[] = "x";
    EXPECT_EQ(file.write(byte, 1), 1);
    EXPECT_EQ(file.getLength(), far + 1);
    EXPECT_EQ(file.gets(byte, 1LL << 31), nullptr);
    EXPECT_EQ(file.read(byte, 0), 0);
}

}  // namespace
