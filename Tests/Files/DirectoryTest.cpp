#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/FileFind.h"
#include "Support/TempDir.h"

using namespace Tovra::Fundo;

namespace {

void touch(const std::string& path) { std::ofstream(path) << "1234"; }

template <class Find>
class Listing : public testing::Test {};
using FindClasses = testing::Types<CFileFind, CFileFindEx>;
TYPED_TEST_SUITE(Listing, FindClasses, );

TYPED_TEST(Listing, ShowsEveryEntryWithItsAttributes) {
    TempDir dir;
    touch(dir.path("file"));
    touch(dir.path("locked"));
    chmod(dir.path("locked").c_str(), 0400);
    touch(dir.path(std::string(236, 'n')));
    touch(dir.path(std::string(237, 'l')));  // its directory record is one too long
    std::filesystem::create_directory(dir.path("sub"));

    for (const char* end : {"/*", "/"}) {
        TypeParam find;
        std::set<std::string> names;
        for (bool found = find.findFile((dir.path() + end).c_str()); found; found = find.findNextFile()) {
            const std::string name = find.getFileName().c_str();
            names.insert(name);
            EXPECT_EQ(find.getFilePath().c_str(), dir.path() + "/" + name);
            EXPECT_EQ(find.isDirectory(), name == "." || name == ".." || name == "sub") << name;
            EXPECT_EQ(find.isReadOnly(), name == "locked") << name;
            EXPECT_EQ(find.isNormal(), name == "file" || name[0] == 'n') << name;
            EXPECT_FALSE(find.isHidden());
            if (name == "file") {
                EXPECT_EQ(find.getLength(), 4);
            }
        }
        EXPECT_EQ(names.count(std::string(237, 'l')), 0U);
        EXPECT_EQ(names.size(), dir.path().size() + 1 + 1 + 236 <= 258 ? 6U : 5U);
        EXPECT_EQ(std::string(find.getFileName().c_str()), dir.path() + "/");
    }
}

TYPED_TEST(Listing, DoesNotMatchNames) {
    TempDir dir;
    touch(dir.path("a.txt"));
    TypeParam find;
    EXPECT_FALSE(find.findFile(dir.path("*.txt").c_str()));
    EXPECT_FALSE(find.findFile(dir.path("none/*").c_str()));
    EXPECT_FALSE(find.findFile(nullptr));
    EXPECT_TRUE(find.findFile(dir.path("*").c_str()));
    EXPECT_TRUE(find.findFile(dir.path("*").c_str()));
}

TEST(Trees, AreMadeAndRemovedWithoutFollowingLinks) {
    TempDir dir;
    EXPECT_TRUE(CFile::makeDirectoryRecursively(dir.path("a/b/c/").c_str()));
    EXPECT_FALSE(CFile::makeDirectoryRecursively(dir.path("a/b/c").c_str()));
    EXPECT_FALSE(CFile::makeDirectoryRecursively(""));
    EXPECT_FALSE(CFile::makeDirectoryRecursively(nullptr));

    CFile::makeDirectory(dir.path("kept").c_str());
    touch(dir.path("kept/file"));
    touch(dir.path("a/b/file"));
    std::filesystem::create_directory_symlink(dir.path("kept"), dir.path("a/b/link"));
    EXPECT_TRUE(CFile::removeDirectoryRecursively(dir.path("a").c_str(), false));
    EXPECT_TRUE(std::filesystem::exists(dir.path("kept/file")));
    EXPECT_TRUE(std::filesystem::is_empty(dir.path("a")));
    EXPECT_TRUE(CFile::removeDirectoryRecursively(dir.path("a/*").c_str(), true));
    EXPECT_FALSE(std::filesystem::exists(dir.path("a")));
    EXPECT_FALSE(CFile::removeDirectoryRecursively(dir.path("a").c_str(), true));
    EXPECT_FALSE(CFile::removeDirectoryRecursively(nullptr, true));

    // A path too long for the listing removes nothing.
    EXPECT_FALSE(CFile::removeDirectoryRecursively((dir.path() + std::string(1100, '/')).c_str(), false));
    EXPECT_TRUE(std::filesystem::exists(dir.path("kept/file")));
}

}  // namespace
