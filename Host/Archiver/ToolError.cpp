#include "Host/Archiver/ToolError.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace krutein {

ToolCode CodeOfErrno(int error) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return kToolDiskFull;
        case EACCES:
        case EPERM:
        case EROFS:
        case EEXIST:
        case EISDIR:
        case ENOTDIR:
        case ENOENT:
        case ENOTEMPTY:
        case ELOOP:
        case ENAMETOOLONG:
            return kToolNotWritable;
        default:
            return kToolFailed;
    }
}

void ThrowErrno(const std::string& doing, int error) {
    throw ToolError(CodeOfErrno(error), doing + ": " + std::generic_category().message(error));
}

std::string OneLine(std::string text) {
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return text;
}

}  // namespace krutein
