#include "platform/FileModes.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace stowhaven {

bool FileModes::setMode(const std::string& path, unsigned mode, std::string* error) {
    // Through a descriptor opened without following a link, so that a link put in the
    // item's place can't turn the change onto another file.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return fail(error, "Couldn't open <" + path + ">: " + std::strerror(errno));
    const bool changed = fchmod(descriptor, static_cast<mode_t>(mode)) == 0;
    const int reason = errno;
    close(descriptor);
    if (!changed) return fail(error, "Couldn't change the mode of <" + path + ">: " + std::strerror(reason));
    return true;
}

void FileModes::keepNewItemsPrivate() { umask(077); }

}  // namespace stowhaven
