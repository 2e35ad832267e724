#include "Fundo/FileFind.h"

#include "Fundo/Fundo3/FileFind.h"

CFileFind::CFileFind() : m_internal(new Tovra::Fundo::CFileFind) {}

CFileFind::~CFileFind() { delete m_internal; }

bool CFileFind::findFile(const char* pattern) { return m_internal->findFile(pattern); }

bool CFileFind::findNextFile() { return m_internal->findNextFile(); }

void CFileFind::close() { m_internal->close(); }

long long CFileFind::getLength() { return m_internal->getLength(); }

std::string CFileFind::getFileName() { return m_internal->getFileName(); }

std::string CFileFind::getFilePath() { return m_internal->getFilePath(); }

bool CFileFind::isReadOnly() { return m_internal->isReadOnly(); }

bool CFileFind::isDirectory() { return m_internal->isDirectory(); }

bool CFileFind::isHidden() { return m_internal->isHidden(); }

bool CFileFind::isNormal() { return m_internal->isNormal(); }
