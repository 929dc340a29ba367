#include "host/ce/Error.h"

#include <cerrno>

namespace ce {

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}

DWORD LastError() {
    return lastError;
}

bool Fail(DWORD error) {
    lastError = error;
    return false;
}

DWORD ErrorOfErrno(int number) {
    switch (number) {
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EEXIST:
        return ERROR_ALREADY_EXISTS;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return ERROR_DISK_FULL;
    case ENAMETOOLONG:
        return ERROR_INVALID_NAME;
    case EIO: // the card is gone or broken
    case ENXIO:
    case ENODEV:
        return ERROR_WRITE_FAULT;
    default: // no permission, a symbolic link, a folder where a file is meant
        return ERROR_ACCESS_DENIED;
    }
}

} // namespace ce
