#include "Platform/DiskSpace.h"

#include <sys/vfs.h>

namespace Tovra::Fundo::Platform {

int diskSpace(const char* path, DiskSpace& space) {
    struct statfs status;
    const int result = ::statfs(path, &status);
    if (result != 0) return result;
    const auto block = static_cast<unsigned long long>(status.f_bsize);
    space = {status.f_bavail * block, status.f_blocks * block, status.f_bfree * block};
    return 0;
}

}  // namespace Tovra::Fundo::Platform
