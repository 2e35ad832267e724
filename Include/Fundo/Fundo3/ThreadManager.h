#pragma once

#include <string>

#include "Fundo/Fundo3/Export.h"
#include "Fundo/Fundo3/String.h"

namespace Tovra::Fundo {

class ThreadManagerInternal;

namespace Detail {
template <class T, bool lasting>
class Instance;
}

/// The table of running CThread bodies, the newest first. The main thread is not in it, nor is any thread
/// that was not made by CThread. Any thread may call any operation, to the very end of the process.
class FUNDO_API CThreadManager {
public:
    /// The one table, made on first use and never destroyed.
    static CThreadManager* instance();

    /// Takes the calling thread's id for the "Main" row of the dump.
    void registerMainThread();
    /// Logs the table at level 4: name, id, priority, and "Timeout" for a passed deadline or "Normal".
    void dumpThreads();
    /// Copies the name of the thread of an id, safe against the thread's end.
    /// @return false if there is no such thread; name is left alone then
    bool getThreadNameByID(int id, CString& name);
    /// Replaces names by the threads whose deadline has passed, each as "name(id)" with at most six
    /// characters of
    /// "(id)", without separators. @return whether there are any
    bool getTimeOutThreads(std::string& names);
    /// Whether an id is in the table.
    bool hasThread(int id);

private:
    friend class Detail::Instance<CThreadManager, true>;
    CThreadManager();

    ThreadManagerInternal* m_internal;
};

}  // namespace Tovra::Fundo
