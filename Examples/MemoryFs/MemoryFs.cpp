// A file system of one's own below "mem:/".
//
//   FundoMemoryFs [file]    default: this program's own executable
//
// Copies a real file into memory and back out again, through nothing but CFile, and compares all bytes.

#include <cstdio>
#include <cstring>

#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/FileFind.h"
#include "MemoryFileSystem.h"

using namespace Tovra::Fundo;

namespace {

bool copy(const char* from, const char* to) {
    CFile source;
    CFile target;
    if (!source.open(from, CFile::modeRead) || !target.open(to, CFile::modeWrite | CFile::modeCreate))
        return false;
    char block[16384];
    for (long got = source.read(block, sizeof block); got > 0; got = source.read(block, sizeof block)) {
        if (target.write(block, static_cast<size_t>(got)) != got) return false;
    }
    target.flush();
    return true;
}

bool sameBytes(const char* one, const char* other) {
    CFile first;
    CFile second;
    const uint8_t* a = first.load(one);
    const uint8_t* b = second.load(other);
    return a != nullptr && b != nullptr && first.getLength() == second.getLength() &&
           std::memcmp(a, b, static_cast<size_t>(first.getLength())) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    const char* original = argc > 1 ? argv[1] : argv[0];
    MemoryFileSystem memory;
    hookFileSystem("mem:/", &memory);

    const char* inMemory = "mem:/copy";
    const char* back = "FundoMemoryFs.copy";
    const bool same = copy(original, inMemory) && copy(inMemory, back) && sameBytes(original, inMemory) &&
                      sameBytes(original, back);
    CFileFind listing;
    for (bool found = listing.findFile("mem:/*"); found; found = listing.findNextFile()) {
        std::printf("mem:/ holds %s, %lld bytes\n", listing.getFileName().c_str(), listing.getLength());
    }
    listing.close();
    CFile::remove(back);
    hookFileSystem("mem:/", nullptr);

    std::printf("%s: %s\n", original, same ? "every byte came back" : "the copies differ");
    return same ? 0 : 1;
}
