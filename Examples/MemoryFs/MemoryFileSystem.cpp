#include "MemoryFileSystem.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

using Tovra::Fundo::FileInfo;

namespace {

constexpr unsigned long long kCapacity = 1ULL << 30;

void name(FileInfo& info, const std::string& text) {
    std::memset(info.name, 0, sizeof info.name);
    text.copy(info.name, sizeof info.name - 1);
}

}  // namespace

std::shared_ptr<MemoryFileSystem::Content> MemoryFileSystem::find(const std::string& path) {
    const auto found = m_files.find(path);
    return found != m_files.end() ? found->second : nullptr;
}

void* MemoryFileSystem::fopen(const char* path, const char* mode) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::shared_ptr<Content> content = find(path);
    if (content == nullptr && mode[0] == 'r') return nullptr;
    if (content == nullptr) content = m_files[path] = std::make_shared<Content>();
    if (mode[0] == 'w') content->clear();
    return new Handle{content, 0, mode[0] == 'a'};
}

int MemoryFileSystem::fclose(void* fp) {
    delete static_cast<Handle*>(fp);
    return 0;
}

size_t MemoryFileSystem::fread(void* buf, size_t size, size_t count, void* fp) {
    if (size == 0) return 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    Handle& file = *static_cast<Handle*>(fp);
    const size_t start = std::min(file.position, file.content->size());
    const size_t items = std::min(count, (file.content->size() - start) / size);
    std::copy_n(file.content->begin() + static_cast<ptrdiff_t>(start), items * size, static_cast<char*>(buf));
    file.position = start + items * size;
    return items;
}

size_t MemoryFileSystem::fwrite(const void* buf, size_t size, size_t count, void* fp) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Handle& file = *static_cast<Handle*>(fp);
    if (file.append) file.position = file.content->size();
    const size_t end = file.position + size * count;
    if (end > file.content->size()) file.content->resize(end);
    std::copy_n(static_cast<const char*>(buf), size * count,
                file.content->begin() + static_cast<ptrdiff_t>(file.position));
    file.position = end;
    return count;
}

int MemoryFileSystem::fflush(void*) { return 0; }

int MemoryFileSystem::fseek(void* fp, long offset, int whence) { return fseek64(fp, offset, whence); }

long MemoryFileSystem::ftell(void* fp) { return static_cast<long>(ftell64(fp)); }

char* MemoryFileSystem::fgets(char* buf, int size, void* fp) {
    int length = 0;
    while (length + 1 < size && fread(buf + length, 1, 1, fp) == 1) {
        if (buf[length++] == '\n') break;
    }
    if (length == 0) return nullptr;
    buf[length] = '\0';
    return buf;
}

int MemoryFileSystem::fputs(const char* text, void* fp) {
    return static_cast<int>(fwrite(text, 1, std::strlen(text), fp));
}

int MemoryFileSystem::rename(const char* oldPath, const char* newPath) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::shared_ptr<Content> content = find(oldPath);
    if (content == nullptr) return -1;
    m_files.erase(oldPath);
    m_files[newPath] = content;
    return 0;
}

int MemoryFileSystem::remove(const char* path) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_files.erase(path) == 1 ? 0 : -1;
}

long MemoryFileSystem::findfirst(const char* pattern, FileInfo& info) {
    std::string folder = pattern;
    if (!folder.empty() && folder.back() == '*') folder.pop_back();
    auto listing = std::make_unique<Listing>();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [path, content] : m_files) {
            if (path.compare(0, folder.size(), folder) != 0) continue;
            listing->entries.emplace_back(path.substr(folder.size()), content->size());
        }
    }
    const long handle = reinterpret_cast<long>(listing.get());
    if (findnext(handle, info) != 0) return -1;
    listing.release();
    return handle;
}

int MemoryFileSystem::findnext(long handle, FileInfo& info) {
    Listing& listing = *reinterpret_cast<Listing*>(handle);
    if (listing.next == listing.entries.size()) return -1;
    const auto& [entry, size] = listing.entries[listing.next++];
    info = {};
    name(info, entry);
    info.size = static_cast<int64_t>(size);
    return 0;
}

int MemoryFileSystem::findclose(long handle) {
    delete reinterpret_cast<Listing*>(handle);
    return 0;
}

int MemoryFileSystem::mkdir(const char*) { return 0; }

int MemoryFileSystem::rmdir(const char*) { return 0; }

int MemoryFileSystem::statfs(const char*, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
                             unsigned long long& freeBytes) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    unsigned long long used = 0;
    for (const auto& [path, content] : m_files)
        used += content->size();
    totalBytes = kCapacity;
    freeBytes = kCapacity - std::min(used, kCapacity);
    userFreeBytes = freeBytes;
    return 0;
}

int MemoryFileSystem::access(const char* path, int) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return find(path) != nullptr ? 0 : -1;
}

int MemoryFileSystem::stat(const char* path, FileInfo& info) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::shared_ptr<Content> content = find(path);
    if (content == nullptr) return -1;
    info = {};
    name(info, path);
    info.size = static_cast<int64_t>(content->size());
    return 0;
}

int MemoryFileSystem::fseek64(void* fp, long long offset, int whence) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Handle& file = *static_cast<Handle*>(fp);
    long long target = offset;
    if (whence == SEEK_CUR) target += static_cast<long long>(file.position);
    if (whence == SEEK_END) target += static_cast<long long>(file.content->size());
    if (target < 0) return -1;
    file.position = static_cast<size_t>(target);
    return 0;
}

long long MemoryFileSystem::ftell64(void* fp) {
    return static_cast<long long>(static_cast<Handle*>(fp)->position);
}
