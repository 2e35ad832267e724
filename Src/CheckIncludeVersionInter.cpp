#include "CheckIncludeVersionInter.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "Fundo/PrintLog.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"

// Tables arrive in the order of loading, each compared with those before it, and stay for checkResult(). All
// lines are plain ones, as befits static initialisers: nobody can have set the module switches yet.

using namespace Tovra::Fundo::Detail;
using Row = CCheckIncludeVersion::IncludeVersion;

static constexpr char kSource[] = "Src/CheckIncludeVersion";
static constexpr char kLibrary[] = "libFundo";
static constexpr char kCheckResult[] = "void CCheckIncludeVersionInter::checkResult()";

namespace {

int lastVersionOf(const Row& row, const std::map<const char*, int>& lastVersion) {
    const auto node = lastVersion.find(row.url);
    FUNDO_ASSERT_IN(node != lastVersion.end(), kCheckResult);
    return node->second;
}

bool isOfScheme(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) != 0; }

// The address in "URL: https://…", or the text as it stands.
const char* addressOf(const char* url) {
    const char* address = std::strstr(url, "://");
    if (address == nullptr) return url;
    while (address != url && isOfScheme(address[-1]))
        --address;
    return address;
}

// What to bring a folder to: "Camera -r4711 https://source.example/camera/Include/Camera".
std::string suggestion(const Row& row, int version) {
    const char* slash = std::strrchr(row.url, '/');
    const std::string folder = slash != nullptr ? slash + 1 : "null";
    return folder + " -r" + std::to_string(version) + " " + addressOf(row.url) + "\n";
}

}  // namespace

IncludeVersionNode::IncludeVersionNode(const char* name, const Row* table, int count)
    : m_name(name != nullptr ? name : ""), m_table(table), m_count(std::max(count, 0)) {}

CCheckIncludeVersionInter* CCheckIncludeVersionInter::instance() {
    static Immortal<CCheckIncludeVersionInter> s_checker;
    return &*s_checker;
}

bool CCheckIncludeVersionInter::match(const char* name, const Row* table, int count) {
    const MutexGuard guard(m_mutex);
    IncludeVersionNode node(name, table, count);
    logLibName(kInfo, kLibrary, "check include version:%s\n", node.name());
    for (const Row& row : node)
        logLibName(kInfo, kLibrary, "%s %s\n", row.url, row.version);

    const bool matched = checkRows(node) && matchRegistered(node);
    m_nodes.push_back(std::move(node));
    if (!matched) m_matchFlag = false;
    return matched;
}

bool CCheckIncludeVersionInter::checkRows(const IncludeVersionNode& node) {
    const auto isGood = [](const Row& row) { return checkVersion(row.version); };
    if (std::all_of(node.begin(), node.end(), isGood)) return true;

    m_versionFlag = false;
    FUNDO_REPORT_PLAIN_THIS(kError, "%s version error\n", node.name());
    for (const Row& row : node) {
        if (!isGood(row)) FUNDO_REPORT_PLAIN_THIS(kError, "%s %s\n", row.url, row.version);
    }
    return false;
}

bool CCheckIncludeVersionInter::matchRegistered(IncludeVersionNode& node) {
    return std::all_of(m_nodes.begin(), m_nodes.end(),
                       [&](IncludeVersionNode& registered) { return match_inter(&node, &registered); });
}

bool CCheckIncludeVersionInter::match_inter(IncludeVersionNode* a, IncludeVersionNode* b) {
    std::vector<std::pair<const Row*, const Row*>> different;
    for (const Row& left : *a) {
        for (const Row& right : *b) {
            if (std::strcmp(left.url, right.url) == 0 && std::strcmp(left.version, right.version) != 0)
                different.emplace_back(&left, &right);
        }
    }
    if (different.empty()) return true;

    FUNDO_REPORT_PLAIN_THIS(kError, "check include version failed\n");
    for (const auto& [left, right] : different) {
        FUNDO_REPORT_PLAIN_THIS(kError, "%s %s %s\n", a->name(), left->url, left->version);
        FUNDO_REPORT_PLAIN_THIS(kError, "%s %s %s\n", b->name(), right->url, right->version);
    }
    return false;
}

bool CCheckIncludeVersionInter::checkVersion(const char* version) {
    return *version != '\0' && version[std::strspn(version, "0123456789")] == '\0';
}

void CCheckIncludeVersionInter::checkResult() {
    if (m_matchFlag) {
        logLibName(kInfo, kLibrary, "CCheckIncludeVersionInter::checkResult successful\n");
        return;
    }
    FUNDO_REPORT_PLAIN_THIS(kError, "CCheckIncludeVersionInter::checkResult error:%s\n",
                            m_versionFlag ? "match error" : "self error");
    m_versionFlag ? reportOutdated() : reportMalformed();
    FUNDO_REPORT_PLAIN_THIS(kError, "----------------check include report end---------------\n");
    FUNDO_ASSERT_IN(m_matchFlag, kCheckResult);
}

void CCheckIncludeVersionInter::reportStart() {
    FUNDO_REPORT_PLAIN_THIS(kError, "----------------check include report start---------------\n");
}

void CCheckIncludeVersionInter::reportMalformed() {
    reportStart();
    for (const IncludeVersionNode& node : m_nodes) {
        for (const Row& row : node) {
            if (checkVersion(row.version)) continue;
            logLibName(kError, kLibrary, "libname:%s, url:%s version:%s\n", node.name(), row.url,
                       row.version);
        }
    }
}

CCheckIncludeVersionInter::LastVersions CCheckIncludeVersionInter::lastVersions() const {
    LastVersions lastVersion;
    for (const IncludeVersionNode& node : m_nodes) {
        for (const Row& row : node) {
            const int version = std::atoi(row.version);
            int& highest = lastVersion.emplace(row.url, version).first->second;
            highest = std::max(highest, version);
        }
    }
    return lastVersion;
}

void CCheckIncludeVersionInter::reportOutdated() {
    const LastVersions lastVersion = lastVersions();
    logLibName(kInfo, kLibrary, "--------include version all start---------\n");
    for (const auto& [url, version] : lastVersion)
        logLibName(kInfo, kLibrary, "%s %d\n", url, version);
    logLibName(kInfo, kLibrary, "--------include version all end---------\n");

    reportStart();
    for (const IncludeVersionNode& node : m_nodes) {
        reportNode(node, lastVersion);
        FUNDO_REPORT_PLAIN_THIS(kError, "------------------------------------\n");
    }
}

void CCheckIncludeVersionInter::reportNode(const IncludeVersionNode& node, const LastVersions& lastVersion) {
    const auto isLast = [&](const Row& row) {
        return std::atoi(row.version) == lastVersionOf(row, lastVersion);
    };
    if (std::all_of(node.begin(), node.end(), isLast)) {
        FUNDO_REPORT_PLAIN_THIS(kError, "[%s], include is ok\n", node.name());
        return;
    }
    FUNDO_REPORT_PLAIN_THIS(kError, "[%s], include version suggest:\n", node.name());
    // Contract: seven characters of each row, so that a long table stays one line of the log.
    constexpr size_t kShown = 7;
    std::string suggestions;
    for (const Row& row : node)
        suggestions.append(suggestion(row, lastVersionOf(row, lastVersion)), 0, kShown);
    FUNDO_REPORT_PLAIN_THIS(kError, "\n%s", suggestions.c_str());
}
