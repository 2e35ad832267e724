#pragma once

#include <string>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo::Detail {
template <class T, bool lasting>
class Instance;
}

/// The table of running threads as old code sees it: those of both thread classes. Any thread may call any
/// operation.
class FUNDO_API IThreadManager {
public:
    virtual ~IThreadManager();
    /// Takes the calling thread's id for the "Main" row of the dump.
    virtual void RegisterMainThread() = 0;
    /// Logs the table at level 4.
    virtual void DumpThreads() = 0;
    /// Replaces names by the threads whose deadline has passed, see
    /// Tovra::Fundo::CThreadManager::getTimeOutThreads(). @return whether there are any
    virtual bool GetTimeOutThreads(std::string& names) = 0;

    /// The one manager.
    static IThreadManager* instance();
};

/// The one IThreadManager.
class FUNDO_API CThreadManager : public IThreadManager {
public:
    /// The one manager, made on first use and never destroyed.
    static CThreadManager* instance();

    void RegisterMainThread() override;                   ///< Names the main thread.
    void DumpThreads() override;                          ///< Logs the table.
    bool GetTimeOutThreads(std::string& names) override;  ///< Tells who is late.

private:
    friend class Tovra::Fundo::Detail::Instance<CThreadManager, true>;
    CThreadManager();
};
