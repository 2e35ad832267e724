// Old files, file-system tables, packets and pools.
#include "Fundo/File.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Fundo/FSOperation.h"
#include "Fundo/FileFind.h"
#include "Fundo/MemPool.h"
#include "Fundo/Packet.h"
#include "Fundo/PacketManager.h"
#include "Support/LogCapture.h"
#include "Support/TempDir.h"

namespace {

TEST(LegacyFile, ForwardsWhatItDoesToFilesAndPaths) {
    const TempDir folder;
    const std::string sub = folder.path("sub");
    const std::string from = sub + "/from";
    const std::string to = sub + "/to";
    EXPECT_TRUE(CFile::MakeDirectory(sub.c_str()));
    char text[] = "first\nsecond\n";
    CFile file;
    ASSERT_TRUE(file.Read(text, 1) == -1 &&
                file.Open(from.c_str(), CFile::modeReadWrite | CFile::modeCreate));
    EXPECT_TRUE(file.Write(text, 6) == 6 && file.Puts(text + 6) >= 0);
    file.Flush();
    EXPECT_EQ(file.Seek(-7, CFile::end), 6);
    char line[16] = "";
    EXPECT_STREQ(file.Gets(line, sizeof line), "second\n");
    EXPECT_TRUE(file.Gets(line, -1) == nullptr && file.Seek(2, 3) == 0) << "no such size or whence";
    EXPECT_TRUE(file.IsOpened() && file.GetPosition() == 13 && file.GetLength() == 13);
    file.Close();
    EXPECT_TRUE(CFile::Rename(from.c_str(), to.c_str()) && !CFile::Access(from.c_str(), 0));
    EXPECT_EQ(std::memcmp(file.Load(to.c_str()), text, 13), 0);
    file.UnLoad();
    EXPECT_FALSE(file.IsOpened());

    CFileFind find;
    int entries = 0;
    for (bool found = find.findFile((sub + "/*").c_str()); found; found = find.findNextFile(), ++entries) {
        EXPECT_EQ(find.isDirectory(), find.getFileName() != "to");
        EXPECT_EQ(find.isNormal(), find.getFilePath() == to && find.getLength() == 13);
        EXPECT_FALSE(find.isHidden() || find.isReadOnly());
    }
    find.close();
    Tovra::Fundo::FileInfo info{};
    EXPECT_TRUE(entries == 3 && CFile::Stat(to.c_str(), info) && info.size == 13);
    unsigned long long user = 0, total = 0, free = 0;
    EXPECT_TRUE(CFile::StatFS(sub.c_str(), user, total, free) && user <= free && free <= total);
    EXPECT_TRUE(CFile::Remove(to.c_str()) && CFile::RemoveDirectory(sub.c_str()));
}

std::string s_asked;

template <char mark, class R, class... A>
R note(A...) {
    s_asked += mark;
    return R();
}

TEST(LegacyHook, EachOperationCallsItsOwnFunction) {
    CFSOperation fs({note<'a'>, note<'b'>, note<'c'>, note<'d'>, note<'e'>, note<'f'>, note<'g'>, note<'h'>,
                     note<'i'>, note<'j'>, note<'k'>, note<'l'>, note<'m'>, note<'n'>, note<'o'>, note<'p'>,
                     note<'q'>, note<'r'>, note<'s'>});
    Tovra::Fundo::FileInfo info{};
    unsigned long long space = 0;
    fs.fopen("", ""), fs.fclose(nullptr), fs.fread(nullptr, 1, 1, nullptr), fs.fwrite(nullptr, 1, 1, nullptr);
    fs.fflush(nullptr), fs.fseek(nullptr, 1, 1), fs.ftell(nullptr), fs.fgets(nullptr, 1, nullptr);
    fs.fputs("", nullptr), fs.rename("", ""), fs.remove(""), fs.findfirst("", info), fs.findnext(1, info);
    fs.findclose(1), fs.mkdir(""), fs.rmdir(""), fs.statfs("", space, space, space);
    fs.access("", 1), fs.stat("", info);
    EXPECT_EQ(s_asked, "abcdefghijklmnopqrs");
    EXPECT_EQ(fs.fseek64(nullptr, 1, 1) + fs.ftell64(nullptr), -2);
}

// Whether a hooked table is asked to make a directory below a path.
bool serves(const std::string& path) {
    s_asked.clear();
    const std::string below = path + "/no/way";
    return CFile::MakeDirectory(below.c_str()) && s_asked == below;
}

TEST(LegacyHook, ThirtyOneTablesFitUntilTheyAreUnhookedByTheirWholePaths) {
    FSOperations table{};
    table.mkdir = [](const char* path) { return s_asked = path, 0; };
    const FSOperations same = table;
    const auto hook = [](const std::string& path, const FSOperations* ops) { hookFS(path.c_str(), ops); };
    const auto slot = [](int i) { return "/slot" + std::to_string(i) + "/"; };
    for (int i = 0; i < 32; ++i)
        hook(slot(i), &table);
    table = {};  // copies serve
    EXPECT_FALSE(serves(slot(31)));
    hook("/slot30", nullptr);
    hookFS(nullptr, nullptr);
    hook(slot(7), nullptr);
    hook(slot(31), &same);
    EXPECT_TRUE(serves(slot(30)) && !serves(slot(7)));
    EXPECT_TRUE(serves(slot(31))) << "a slot that is free again serves";
    for (int i = 0; i < 32; ++i)
        hook(slot(i), nullptr);
    EXPECT_FALSE(serves(slot(30)));

    const std::string longest(31, '/');
    const std::string tooLong = "/" + std::string(31, 'x');
    for (const std::string& path : {longest, tooLong}) {
        hook(path, &same);
        hook(path, nullptr);
    }
    EXPECT_TRUE(serves(tooLong) && !serves(tooLong.substr(0, 31))) << "hooked whole, and never found again";
    EXPECT_FALSE(serves(longest));
    hook("", &same);
    EXPECT_DEATH(hook("/next", &same), "Src/FSOperation:.*fsOpts\\[i\\] == NULL");
}

TEST(LegacyPacket, IsServedFromThePoolWithAHeaderAfterConfig) {
    IPacketManager::config(0x10000, 1024, 12);
    EXPECT_EQ(IPacketManager::instance()->GetBufferSize(), 0x10000U);
    CPacket packet(1000UL);
    EXPECT_EQ(IPacketManager::instance()->GetFreeSize(), 0x10000U - 1024U);
    ASSERT_EQ(packet.GetHeaderSize(), 12U);
    std::memset(packet.GetHeader(), 0xFF, 12);
    packet.ClearHeader();
    EXPECT_EQ(std::memcmp(packet.GetHeader(), std::string(12, '\0').data(), 12), 0);
    char text[] = "abc";
    EXPECT_TRUE(packet.SetLength(0) && packet.PutBuffer(text, 3) == 3);
    EXPECT_EQ(packet.GetLength() + packet.GetLeft(), packet.GetSize());
    EXPECT_FALSE(packet.SetLength(packet.GetSize() + 1));
    CPacket again = static_cast<Tovra::Memory::CPacket>(packet);
    packet = CPacket();
    EXPECT_EQ(std::memcmp(again.GetBuffer(), "abc", 3), 0) << "the bytes live with the last handle";
    Support::LogCapture log(4);
    IPacketManager::instance()->DumpNodes();
    EXPECT_EQ(log.count("CPacketManager dump: SYS Policy"), 1U);

    CPacket refused(0x100000UL);
    for (CPacket empty : {refused, packet, CPacket(Tovra::Memory::CPacket())}) {
        EXPECT_EQ(empty.GetSize() + empty.GetLength() + empty.GetLeft() + empty.GetHeaderSize(), 0U);
        EXPECT_FALSE(empty.GetBuffer() || empty.GetHeader() || empty.PutBuffer(text, 1) ||
                     empty.SetLength(0));
        empty.ClearHeader();
    }
}

unsigned long s_returned = 0;
void giveBack(void* argument, unsigned long size) { s_returned = argument == &s_returned ? size : 0; }

TEST(LegacyMemory, GoesBackWhereItCameFrom) {
    char bytes[64];
    CPacket packet(64U, CPacket::Deleter(giveBack), &s_returned);
    EXPECT_EQ(packet.GetHeaderSize() + CPacket(1UL).GetHeaderSize(), 2 * 128U) << "without a config";
    EXPECT_TRUE(packet.PutBuffer(bytes, 64) == 64 && packet.GetBuffer() == bytes);
    packet = CPacket();
    EXPECT_EQ(s_returned, 64U);

    CMemPool pool(24, 4);
    void* first = pool.alloc();
    EXPECT_NE(first, pool.alloc());
    pool.free(first);
    EXPECT_EQ(pool.alloc(), first);
}

}  // namespace
