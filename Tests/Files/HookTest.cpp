#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "Fundo/Fundo3/File.h"
#include "RecordingFileSystem.h"
#include "Support/TempDir.h"

using namespace Tovra::Fundo;

namespace {

TEST(Hooks, TheFirstRowThatFitsServesAPath) {
    MemoryFileSystem first;
    MemoryFileSystem second;
    IFileSystem* const standard = _findOpts("/a");
    hookFileSystem("/a", &first);
    hookFileSystem("/a/b", &second);
    EXPECT_EQ(_findOpts("/a/b/c"), &first);
    EXPECT_EQ(_findOpts("/abc"), &first);
    EXPECT_EQ(_findOpts("/b"), standard);

    // The freed row comes first again, whenever it is filled.
    hookFileSystem("/a", nullptr);
    EXPECT_EQ(_findOpts("/a/b/c"), &second);
    hookFileSystem("/a/b/c", &first);
    EXPECT_EQ(_findOpts("/a/b/c"), &first);
    hookFileSystem("/unknown", nullptr);
    EXPECT_EQ(_findOpts("/a/b"), &second);
}

TEST(Hooks, ThereIsRoomForThirtyOne) {
    MemoryFileSystem fs;
    for (int i = 0; i < 32; ++i)
        hookFileSystem(("/hook" + std::to_string(i) + "/").c_str(), &fs);
    EXPECT_EQ(_findOpts("/hook30/x"), &fs);
    EXPECT_NE(_findOpts("/hook31/x"), &fs);
}

TEST(Hooks, ALongPrefixIsCutAndCannotBeRemovedByItsFullText) {
    MemoryFileSystem fs;
    const std::string prefix = "/" + std::string(300, 'x');
    hookFileSystem(prefix.c_str(), &fs);
    EXPECT_EQ(_findOpts(prefix.substr(0, 255).c_str()), &fs);
    EXPECT_NE(_findOpts(prefix.substr(0, 254).c_str()), &fs);
    hookFileSystem(prefix.c_str(), nullptr);
    EXPECT_EQ(_findOpts(prefix.c_str()), &fs);
    hookFileSystem(prefix.substr(0, 255).c_str(), nullptr);
    EXPECT_NE(_findOpts(prefix.c_str()), &fs);
}

// What open() was really asked for shows in the descriptor.
TEST(DefaultFileSystem, OpensWithTheFlagsThatTheLettersName) {
    TempDir dir;
    const std::string path = dir.path("file");
    IFileSystem* fs = _findOpts(path.c_str());
    struct Case {
        const char* mode;
        bool creates;
        int flags;
        bool closeOnExec;
    };
    for (const Case& c : {Case{"rb", false, O_RDONLY, false}, Case{"wb", true, O_WRONLY, false},
                          Case{"ab", true, O_WRONLY | O_APPEND, false}, Case{"rb+", false, O_RDWR, false},
                          Case{"wb+", true, O_RDWR, false}, Case{"ab+", true, O_RDWR | O_APPEND, false},
                          Case{"wbe", true, O_WRONLY, true}, Case{"rbd", false, O_RDONLY, false}}) {
        SCOPED_TRACE(c.mode);
        ::unlink(path.c_str());
        void* created = fs->fopen(path.c_str(), c.mode);
        EXPECT_EQ(created != nullptr, c.creates);
        if (created != nullptr) fs->fclose(created);
        { std::ofstream(path) << "content"; }

        auto* stream = static_cast<FILE*>(fs->fopen(path.c_str(), c.mode));
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(fcntl(fileno(stream), F_GETFL) & (O_ACCMODE | O_APPEND), c.flags);
        EXPECT_EQ((fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC) != 0, c.closeOnExec);
        EXPECT_EQ(__fbufsize(stream), 16384U);
        fs->fclose(stream);
        EXPECT_EQ(std::filesystem::file_size(path), c.mode[0] == 'w' ? 0U : 7U);
    }
}

TEST(DefaultFileSystem, TellsStatusAndSpaceAndHasNoVectorWrite) {
    TempDir dir;
    const std::string path = dir.path("file");
    { std::ofstream(path) << "12345"; }
    FileInfo info{};
    EXPECT_TRUE(CFile::stat(path.c_str(), info));
    EXPECT_EQ(info.size, 5);
    EXPECT_STREQ(info.name, path.c_str());
    EXPECT_TRUE(S_ISREG(info.attrib));
    EXPECT_FALSE(CFile::stat(dir.path("none").c_str(), info));
    EXPECT_EQ(info.size, 5);

    unsigned long long bytes[] = {1, 1, 1};
    EXPECT_TRUE(CFile::statFS(path.c_str(), bytes[0], bytes[1], bytes[2]));
    EXPECT_TRUE(bytes[0] <= bytes[2] && bytes[2] <= bytes[1] && bytes[1] > 1);
    EXPECT_FALSE(CFile::statFS(dir.path("none").c_str(), bytes[0], bytes[1], bytes[2]));
    EXPECT_EQ(bytes[0] + bytes[1] + bytes[2], 0U);
    EXPECT_EQ(_findOpts("/")->writev(1, nullptr, 0), -1);
}

TEST(DefaultFileSystemDeathTest, RefusesToOpenWithoutAMode) {
    EXPECT_DEATH(
        _findOpts("/")->fopen("/x", nullptr),
        "assertion \\(mode != NULL\\) failed in virtual void \\*Tovra::Fundo::FileDefaultOpt::fopen\\("
        "const char \\*, const char \\*\\): Src/Fundo3/File\\(");
    EXPECT_DEATH(_findOpts("/")->fopen("/x", ""), "assertion \\(len > 0\\) failed");
}

}  // namespace
