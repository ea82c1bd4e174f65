#include "core/DataToImport.h"

#include <mutex>

namespace stowhaven {

namespace {

std::mutex gMutex;
std::optional<std::string> gURL;

}  // namespace

std::optional<std::string> DataToImport::url() {
    std::lock_guard lock(gMutex);
    return gURL;
}

void DataToImport::setURL(std::optional<std::string> url) {
    std::lock_guard lock(gMutex);
    gURL = std::move(url);
}

}  // namespace stowhaven
