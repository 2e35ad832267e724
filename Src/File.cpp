#include "Fundo/File.h"

using Current = Tovra::Fundo::CFile;

CFile::CFile() : m_internal(new Current) {}

CFile::~CFile() { delete m_internal; }

bool CFile::Open(const char* path, unsigned int flags) { return m_internal->open(path, flags); }

void CFile::Close() { m_internal->close(); }

long CFile::Read(void* buffer, unsigned int count) { return m_internal->read(buffer, count); }

long CFile::Write(void* buffer, unsigned int count) { return m_internal->write(buffer, count); }

void CFile::Flush() { m_internal->flush(); }

long CFile::Seek(long offset, unsigned int whence) {
    if (whence > end) return 0;
    return m_internal->seek(offset, static_cast<Current::SeekPosition>(whence));
}

long CFile::GetPosition() { return m_internal->getPosition(); }

long CFile::GetLength() { return m_internal->getLength(); }

char* CFile::Gets(char* buffer, int size) {
    return size < 0 ? nullptr : m_internal->gets(buffer, static_cast<size_t>(size));
}

int CFile::Puts(const char* text) { return m_internal->puts(text); }

bool CFile::IsOpened() { return m_internal->isOpen(); }

unsigned char* CFile::Load(const char* path) { return m_internal->load(path); }

void CFile::UnLoad() { m_internal->unload(); }

bool CFile::Rename(const char* oldPath, const char* newPath) { return Current::rename(oldPath, newPath); }

bool CFile::Remove(const char* path) { return Current::remove(path); }

bool CFile::MakeDirectory(const char* path) { return Current::makeDirectory(path); }

bool CFile::RemoveDirectory(const char* path) { return Current::removeDirectory(path); }

bool CFile::StatFS(const char* path, unsigned long long& userFreeBytes, unsigned long long& totalBytes,
                   unsigned long long& freeBytes) {
    return Current::statFS(path, userFreeBytes, totalBytes, freeBytes);
}

bool CFile::Access(const char* path, int mode) { return Current::access(path, mode); }

bool CFile::Stat(const char* path, Tovra::Fundo::FileInfo& info) { return Current::stat(path, info); }
