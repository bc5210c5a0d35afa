#include "platform/linux/base/host_errors.h"

#include <cerrno>

namespace permora::host {
namespace {

struct ErrorPair {
    int errorNumber;
    DWORD code;
};

// Every errno value of file, attribute and process calls. The first row of a code also gives its text. The
// codes of the second table have texts of their own in system_messages.cpp.
// clang-format off
constexpr ErrorPair kFileSystemErrors[] = {
    {ENOENT,       ERROR_FILE_NOT_FOUND},
    {EACCES,       ERROR_ACCESS_DENIED},
    {EPERM,        ERROR_ACCESS_DENIED},
    {EISDIR,       ERROR_ACCESS_DENIED},  // what the system says when a folder is opened as a file
    {ENOTDIR,      ERROR_DIRECTORY},
    {EEXIST,       ERROR_ALREADY_EXISTS},
    {ENOTEMPTY,    ERROR_DIR_NOT_EMPTY},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {ELOOP,        ERROR_CANT_RESOLVE_FILENAME},
    {EMLINK,       ERROR_TOO_MANY_LINKS},
    {EXDEV,        ERROR_NOT_SAME_DEVICE},
    {EROFS,        ERROR_WRITE_PROTECT},
    {ENOSPC,       ERROR_DISK_FULL},
    {EDQUOT,       ERROR_NOT_ENOUGH_QUOTA},
    {EFBIG,        ERROR_FILE_TOO_LARGE},
    {EMFILE,       ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE,       ERROR_TOO_MANY_OPEN_FILES},
    {EBUSY,        ERROR_BUSY},
    {EAGAIN,       ERROR_BUSY},
    {EIO,          ERROR_IO_DEVICE},
    {ENODEV,       ERROR_DEV_NOT_EXIST},
    {ENXIO,        ERROR_DEV_NOT_EXIST},
    {ENOMEDIUM,    ERROR_NOT_READY},
    {ENOTCONN,     ERROR_DEVICE_NOT_CONNECTED},  // the program behind a FUSE mount is gone
    {ECONNABORTED, ERROR_DEVICE_NOT_CONNECTED},  // and this one while it was answering
    {ESTALE,       ERROR_FILE_INVALID},
    {EUCLEAN,      ERROR_FILE_CORRUPT},
    {EBADMSG,      ERROR_CRC},  // a checksum of the file system does not match
    {EHOSTDOWN,    ERROR_HOST_DOWN},
    {EHOSTUNREACH, ERROR_HOST_UNREACHABLE},
    {ENETUNREACH,  ERROR_NETWORK_UNREACHABLE},
    {ENETDOWN,     ERROR_NETWORK_UNREACHABLE},
    {ECONNREFUSED, ERROR_CONNECTION_REFUSED},
    {ECONNRESET,   ERROR_NETNAME_DELETED},
};

constexpr ErrorPair kOtherErrors[] = {
    {ETXTBSY,      ERROR_SHARING_VIOLATION},
    {EINVAL,       ERROR_INVALID_PARAMETER},
    {EBADF,        ERROR_INVALID_HANDLE},
    {ENOMEM,       ERROR_NOT_ENOUGH_MEMORY},
    {ENOTTY,       ERROR_INVALID_FUNCTION},
    {EOPNOTSUPP,   ERROR_NOT_SUPPORTED},
    {ENOSYS,       ERROR_NOT_SUPPORTED},
    {ENODATA,      ERROR_NOT_FOUND},      // no such attribute
    {E2BIG,        ERROR_EAS_DIDNT_FIT},  // an attribute larger than any can be
    {ERANGE,       ERROR_INSUFFICIENT_BUFFER},
    {EOVERFLOW,    ERROR_FILE_TOO_LARGE},
    {EILSEQ,       ERROR_NO_UNICODE_TRANSLATION},
    {ETIMEDOUT,    ERROR_TIMEOUT},
    {EINTR,        ERROR_OPERATION_ABORTED},
    {ECANCELED,    ERROR_OPERATION_ABORTED},
};
// clang-format on

}  // namespace

DWORD ErrorFromErrno(int errorNumber) {
    for (const ErrorPair& pair : kFileSystemErrors)
        if (pair.errorNumber == errorNumber) return pair.code;
    for (const ErrorPair& pair : kOtherErrors)
        if (pair.errorNumber == errorNumber) return pair.code;
    return ERROR_IO_DEVICE;
}

DWORD ErrorFromOpening(int errorNumber) {
    return errorNumber == EWOULDBLOCK ? ERROR_SHARING_VIOLATION : ErrorFromErrno(errorNumber);
}

int ErrnoForMessage(DWORD code) {
    // A folder of the path is missing. The C library has one text for both cases.
    if (code == ERROR_PATH_NOT_FOUND) return ENOENT;
    for (const ErrorPair& pair : kFileSystemErrors)
        if (pair.code == code) return pair.errorNumber;
    return 0;
}

}  // namespace permora::host
