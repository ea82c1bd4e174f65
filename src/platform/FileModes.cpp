#include "platform/FileModes.h"

#include <sys/stat.h>

namespace stowhaven {

void FileModes::keepNewItemsPrivate() { umask(077); }

}  // namespace stowhaven
