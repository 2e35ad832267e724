#pragma once

#include <list>
#include <map>
#include <string>

#include "Fundo/CheckIncludeVersion.h"
#include "Fundo/Fundo3/Mutex.h"

// The table of one library.
class IncludeVersionNode {
public:
    using Row = CCheckIncludeVersion::IncludeVersion;

    IncludeVersionNode(const char* name, const Row* table, int count);

    const char* name() const { return m_name.c_str(); }
    const Row* begin() const { return m_table; }
    const Row* end() const { return m_table + m_count; }

private:
    std::string m_name;
    const Row* m_table;  // the library's own
    int m_count;
};

// The checker of the process: keeps every table, and whether one was malformed or disagreed with another.
class CCheckIncludeVersionInter {
public:
    CCheckIncludeVersionInter() = default;
    virtual ~CCheckIncludeVersionInter() = default;

    static CCheckIncludeVersionInter* instance();

    // Registers a table in any case. @return whether it is well-formed and agrees with all before it
    bool match(const char* name, const CCheckIncludeVersion::IncludeVersion* table, int count);

    // Whether two tables have one revision for each URL that they share; logs where not.
    bool match_inter(IncludeVersionNode* a, IncludeVersionNode* b);

    // Whether a revision is digits and nothing else.
    static bool checkVersion(const char* version);

    void checkResult();

private:
    // Contract: by the URL's address, so that equal texts of two libraries are two entries.
    using LastVersions = std::map<const char*, int>;

    bool checkRows(const IncludeVersionNode& node);
    bool matchRegistered(IncludeVersionNode& node);
    void reportStart();
    void reportMalformed();
    void reportOutdated();
    void reportNode(const IncludeVersionNode& node, const LastVersions& lastVersion);
    LastVersions lastVersions() const;

    std::list<IncludeVersionNode> m_nodes;
    Tovra::Fundo::CMutex m_mutex;  // of registering; held while its lines are logged
    bool m_matchFlag = true;       // no table was malformed or disagreed
    bool m_versionFlag = true;     // no table was malformed
};
