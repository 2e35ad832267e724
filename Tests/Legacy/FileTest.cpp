// Old files, file-system tables, packets and pools, in one translation unit with the current ones.
#include "Fundo/File.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "Fundo/FSOperation.h"
#include "Fundo/FileFind.h"
#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/FileFind.h"
#include "Fundo/Fundo3/SystemCall.h"
#include "Fundo/Log2i.h"
#include "Fundo/MemPool.h"
#include "Fundo/Packet.h"
#include "Fundo/PacketManager.h"
#include "Fundo/SystemCall.h"
#include "Memory/MemPool.h"
#include "Memory/Packet.h"
#include "Memory/PacketManager.h"
#include "Support/LogCapture.h"
#include "Support/TempDir.h"

using Support::LogCapture;

namespace {

TEST(LegacyFile, WritesReadsAndSeeks) {
    const TempDir folder;
    const std::string path = folder.path("file");
    char text[] = "first\nsecond\n";
    CFile file;
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ(file.Read(text, 1), -1);
    ASSERT_TRUE(file.Open(path.c_str(), CFile::modeReadWrite | CFile::modeCreate));
    EXPECT_EQ(file.Write(text, 6), 6);
    EXPECT_GE(file.Puts(text + 6), 0);
    file.Flush();
    EXPECT_EQ(file.Seek(-7, CFile::end), 6);
    char line[16] = "";
    EXPECT_STREQ(file.Gets(line, sizeof line), "second\n");
    EXPECT_EQ(file.Gets(line, -1), nullptr);
    EXPECT_EQ(file.GetPosition(), 13);
    EXPECT_EQ(file.Seek(2, 3), 0) << "there is no such whence";
    EXPECT_EQ(file.GetPosition(), 13);
    EXPECT_EQ(file.GetLength(), 13);
    file.Close();
    EXPECT_FALSE(file.IsOpened());

    const unsigned char* loaded = file.Load(path.c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(std::memcmp(loaded, text, 13), 0);
    file.UnLoad();
}

TEST(LegacyFile, WorksOnPaths) {
    const TempDir folder;
    const std::string sub = folder.path("sub");
    const std::string from = sub + "/from";
    const std::string to = sub + "/to";
    EXPECT_TRUE(CFile::MakeDirectory(sub.c_str()));
    CFile file;
    ASSERT_TRUE(file.Open(from.c_str(), CFile::modeWrite | CFile::modeCreate));
    file.Puts("12345");
    file.Close();
    EXPECT_TRUE(CFile::Rename(from.c_str(), to.c_str()));
    EXPECT_FALSE(CFile::Access(from.c_str(), 0));
    Tovra::Fundo::FileInfo info{};
    EXPECT_TRUE(CFile::Stat(to.c_str(), info));
    EXPECT_EQ(info.size, 5);

    CFileFind find;
    std::set<std::string> names;
    for (bool found = find.findFile((sub + "/*").c_str()); found; found = find.findNextFile()) {
        names.insert(find.getFileName());
        if (find.getFileName() != "to") continue;
        EXPECT_EQ(find.getFilePath(), to);
        EXPECT_EQ(find.getLength(), 5);
        EXPECT_TRUE(find.isNormal());
        EXPECT_FALSE(find.isDirectory() || find.isHidden() || find.isReadOnly());
    }
    find.close();
    EXPECT_EQ(names, (std::set<std::string>{".", "..", "to"}));

    unsigned long long user = 0;
    unsigned long long total = 0;
    unsigned long long free = 0;
    EXPECT_TRUE(CFile::StatFS(sub.c_str(), user, total, free));
    EXPECT_GE(total, free);
    EXPECT_TRUE(CFile::Remove(to.c_str()));
    EXPECT_TRUE(CFile::RemoveDirectory(sub.c_str()));
}

// A table that knows of no file, and tells what it was asked.
std::string s_asked;

FSOperations tellingTable() {
    FSOperations table{};
    table.mkdir = [](const char* path) { return s_asked = path, 0; };
    table.rename = [](const char* from, const char* to) { return s_asked = std::string(from) + '>' + to, 0; };
    table.fopen = [](const char*, const char* mode) -> void* { return s_asked = mode, &s_asked; };
    table.ftell = [](void*) { return 0L; };
    table.stat = [](const char*, Tovra::Fundo::FileInfo&) { return -1; };
    table.fclose = [](void* fp) { return fp == &s_asked ? 0 : -1; };
    table.fwrite = [](const void* text, size_t size, size_t count, void*) {
        return s_asked.assign(static_cast<const char*>(text), size * count), count;
    };
    return table;
}

template <int number, class R, class... A>
R note(A...) {
    s_asked = std::to_string(number);
    return R();
}

TEST(LegacyHook, EachOperationCallsItsOwnFunction) {
    const FSOperations table{note<0>,  note<1>,  note<2>,  note<3>,  note<4>,  note<5>,  note<6>,
                             note<7>,  note<8>,  note<9>,  note<10>, note<11>, note<12>, note<13>,
                             note<14>, note<15>, note<16>, note<17>, note<18>};
    CFSOperation fs(table);
    Tovra::Fundo::FileInfo info{};
    unsigned long long space = 0;
    int number = 0;
    const auto called = [&number] { return s_asked == std::to_string(number++); };
    EXPECT_TRUE((fs.fopen("", ""), called()));
    EXPECT_TRUE((fs.fclose(nullptr), called()));
    EXPECT_TRUE((fs.fread(nullptr, 1, 1, nullptr), called()));
    EXPECT_TRUE((fs.fwrite(nullptr, 1, 1, nullptr), called()));
    EXPECT_TRUE((fs.fflush(nullptr), called()));
    EXPECT_TRUE((fs.fseek(nullptr, 1, 1), called()));
    EXPECT_TRUE((fs.ftell(nullptr), called()));
    EXPECT_TRUE((fs.fgets(nullptr, 1, nullptr), called()));
    EXPECT_TRUE((fs.fputs("", nullptr), called()));
    EXPECT_TRUE((fs.rename("", ""), called()));
    EXPECT_TRUE((fs.remove(""), called()));
    EXPECT_TRUE((fs.findfirst("", info), called()));
    EXPECT_TRUE((fs.findnext(1, info), called()));
    EXPECT_TRUE((fs.findclose(1), called()));
    EXPECT_TRUE((fs.mkdir(""), called()));
    EXPECT_TRUE((fs.rmdir(""), called()));
    EXPECT_TRUE((fs.statfs("", space, space, space), called()));
    EXPECT_TRUE((fs.access("", 1), called()));
    EXPECT_TRUE((fs.stat("", info), called()));
    EXPECT_EQ(fs.fseek64(nullptr, 1, 1), -1);
    EXPECT_EQ(fs.ftell64(nullptr), -1);
}

TEST(LegacyHook, ServesATableOfFunctionsUntilItIsUnhooked) {
    FSOperations table = tellingTable();
    hookFS("/hooked", &table);
    table = {};  // a copy serves
    EXPECT_TRUE(CFile::MakeDirectory("/hooked/a"));
    EXPECT_EQ(s_asked, "/hooked/a");
    EXPECT_TRUE(Tovra::Fundo::CFile::rename("/hooked/a", "b"));
    EXPECT_EQ(s_asked, "/hooked/a>b");
    CFile file;
    ASSERT_TRUE(file.Open("/hooked/a", CFile::modeWrite));
    EXPECT_EQ(s_asked, "wb");
    char text[] = "text";
    file.Write(text, 4);
    EXPECT_EQ(s_asked, "text");
    file.Close();

    hookFS("/hooke", nullptr);
    hookFS(nullptr, nullptr);
    EXPECT_TRUE(CFile::MakeDirectory("/hooked/b")) << "only the whole path unhooks";
    hookFS("/hooked", nullptr);
    EXPECT_FALSE(CFile::MakeDirectory("/hooked/c/d"));
    EXPECT_EQ(s_asked, "/hooked/b");
}

TEST(LegacyHook, ThirtyOneTablesFitAndOneMoreIsIgnored) {
    const FSOperations table = tellingTable();
    for (int i = 0; i < 32; ++i)
        hookFS(("/slot" + std::to_string(i) + "/").c_str(), &table);
    EXPECT_TRUE(CFile::MakeDirectory("/slot30/a"));
    EXPECT_FALSE(CFile::MakeDirectory("/slot31/a"));
    hookFS("/slot7/", nullptr);
    hookFS("/slot31/", &table);
    EXPECT_TRUE(CFile::MakeDirectory("/slot31/a")) << "a slot that is free again serves";
    EXPECT_FALSE(CFile::MakeDirectory("/slot7/a"));
    for (int i = 0; i < 32; ++i)
        hookFS(("/slot" + std::to_string(i) + "/").c_str(), nullptr);
    EXPECT_FALSE(CFile::MakeDirectory("/slot30/a"));
}

TEST(LegacyHook, ALongPathIsHookedWholeAndStays) {
    const std::string longest(31, '/');
    const std::string tooLong = "/" + std::string(31, 'x');
    const FSOperations table = tellingTable();
    hookFS(longest.c_str(), &table);
    hookFS(tooLong.c_str(), &table);
    hookFS(longest.c_str(), nullptr);
    hookFS(tooLong.c_str(), nullptr);
    EXPECT_FALSE(CFile::MakeDirectory((longest + "no/no").c_str()));
    EXPECT_TRUE(CFile::MakeDirectory((tooLong + "/a").c_str()));
    EXPECT_FALSE(CFile::MakeDirectory((tooLong.substr(0, 31) + "/a").c_str()));
}

TEST(LegacyHookDeathTest, TheEmptyPathCanBeHookedOnce) {
    const FSOperations table = tellingTable();
    hookFS("", &table);
    EXPECT_DEATH(hookFS("/next", &table), "Src/FSOperation:.*fsOpts\\[i\\] == NULL");
}

TEST(LegacyPacket, IsServedFromThePoolWithAHeaderAfterConfig) {
    IPacketManager::config(0x10000, 1024, 12);
    EXPECT_EQ(IPacketManager::instance(), CPacketManager::instance());
    EXPECT_EQ(IPacketManager::instance()->GetBufferSize(), 0x10000U);
    CPacket packet(1000UL);
    EXPECT_EQ(IPacketManager::instance()->GetFreeSize(), 0x10000U - 1024U);
    ASSERT_EQ(packet.GetHeaderSize(), 12U);
    std::memset(packet.GetHeader(), 0xFF, 12);
    packet.ClearHeader();
    const char zeros[12] = {};
    EXPECT_EQ(std::memcmp(packet.GetHeader(), zeros, sizeof zeros), 0);

    EXPECT_GE(packet.GetSize(), 1000U);
    EXPECT_TRUE(packet.SetLength(0));
    EXPECT_EQ(packet.GetLeft(), packet.GetSize());
    char text[] = "abc";
    EXPECT_EQ(packet.PutBuffer(text, 3), 3U);
    EXPECT_EQ(packet.GetLength(), 3U);
    EXPECT_EQ(packet.GetLeft(), packet.GetSize() - 3);
    EXPECT_FALSE(packet.SetLength(packet.GetSize() + 1));

    const Tovra::Memory::CPacket current = packet;
    EXPECT_EQ(current.getBuffer(), packet.GetBuffer());
    CPacket again = current;
    packet = CPacket();
    EXPECT_EQ(std::memcmp(again.GetBuffer(), "abc", 3), 0) << "the bytes live with the last handle";

    LogCapture log(4);
    IPacketManager::instance()->DumpNodes();
    EXPECT_EQ(log.count("CPacketManager dump: SYS Policy"), 1U);
}

TEST(LegacyPacket, AnEmptyOneAnswersZero) {
    IPacketManager::config(0x10000, 1024, 4);
    CPacket refused(0x100000UL);
    CPacket copy(refused);
    CPacket shared{Tovra::Memory::CPacket()};
    for (CPacket* packet : {&refused, &copy, &shared}) {
        char byte = 0;
        EXPECT_EQ(packet->GetSize() + packet->GetLength() + packet->GetLeft() + packet->GetHeaderSize(), 0U);
        EXPECT_EQ(packet->GetBuffer(), nullptr);
        EXPECT_EQ(packet->GetHeader(), nullptr);
        EXPECT_EQ(packet->PutBuffer(&byte, 1), 0U);
        EXPECT_FALSE(packet->SetLength(0));
        packet->ClearHeader();
        EXPECT_FALSE(static_cast<Tovra::Memory::CPacket>(*packet).valid());
    }
}

TEST(LegacyPacket, BytesBroughtLaterGoBackThroughTheDelegate) {
    static void* s_argument = nullptr;
    static unsigned long s_size = 0;
    const auto giveBack = [](void* argument, unsigned long size) { s_argument = argument, s_size = size; };
    char bytes[64];
    {
        CPacket packet(64U, CPacket::Deleter(+giveBack), &s_size);
        EXPECT_EQ(packet.PutBuffer(bytes, 64), 64U);
        EXPECT_EQ(packet.GetBuffer(), bytes);
    }
    EXPECT_EQ(s_argument, &s_size);
    EXPECT_EQ(s_size, 64U);
}

TEST(LegacyMemPool, HandsOutWhatCameBackLast) {
    CMemPool pool(24, 4);
    void* first = pool.alloc();
    void* second = pool.alloc();
    EXPECT_NE(first, second);
    pool.free(first);
    EXPECT_EQ(pool.alloc(), first);
    pool.free(first);
    pool.free(second);
}

TEST(LegacyFunctions, RoundLogarithmsDownAndRunNoCommand) {
    for (unsigned long bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(log2i(1UL << bit), static_cast<int>(bit));
        EXPECT_EQ(log2i((2UL << bit) - 1), static_cast<int>(bit));
    }
    EXPECT_EQ(log2i(0), 0);

    LogCapture log(6);
    EXPECT_EQ(systemCall(nullptr), 1);
    EXPECT_EQ(log.lines().size(), 0U);
    EXPECT_EQ(systemCall("true"), -1);
    EXPECT_EQ(log.count("systemcall command:true"), 1U);
    EXPECT_EQ(log.count("do not support system call 'system', line :  "), 1U);
}

}  // namespace
